// SPDX-License-Identifier: MIT
#include "xmp/readers/AriReader.h"

#include <bit>
#include <cstdio>

#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Facts: SMPTE RDD 30 and the field tables of public decoders. Little-endian; a block is present if
// its size is not 0.
constexpr std::string_view kMagic{"ARRI\x12\x34\x56\x78", 8};
constexpr std::uint64_t kVersion = 0x00C;
constexpr std::uint32_t kKnownVersion = 3;

constexpr std::uint64_t kImageBlock = 0x010;
constexpr std::uint64_t kWidth = 0x014;
constexpr std::uint64_t kHeight = 0x018;
constexpr std::uint64_t kActiveWidth = 0x02C;
constexpr std::uint64_t kActiveHeight = 0x030;

constexpr std::uint64_t kContentBlock = 0x054;
constexpr std::uint64_t kWhiteBalance = 0x05C;  // kelvin
constexpr std::uint64_t kLensSqueeze = 0x0C4;   // 32-bit float

constexpr std::uint64_t kCameraBlock = 0x160;
constexpr std::uint64_t kSerialNumber = 0x170;
constexpr std::uint64_t kCameraIndex = 0x178;     // letter
constexpr std::uint64_t kCreationDate = 0x17C;    // BCD, YYYYMMDD
constexpr std::uint64_t kCreationTime = 0x180;    // BCD, HHMMSSff
constexpr std::uint64_t kProjectRate = 0x1A4;     // frames per 1000 seconds
constexpr std::uint64_t kMasterTimecode = 0x1A8;  // BCD, HHMMSSFF
constexpr std::uint64_t kCameraFamily = 0x29C;    // 8
constexpr std::uint64_t kUUID = 0x2D0;            // 16
constexpr std::uint64_t kCameraModel = 0x2F8;     // 20

constexpr std::uint64_t kClipBlock = 0x4F0;
constexpr std::uint64_t kCircleTake = 0x4F4;       // u8
constexpr std::uint64_t kReel = 0x4F8;             // 8
constexpr std::uint64_t kScene = 0x500;            // 16
constexpr std::uint64_t kTake = 0x510;             // 8
constexpr std::uint64_t kDirector = 0x518;         // 32
constexpr std::uint64_t kCinematographer = 0x538;  // 32
constexpr std::uint64_t kClipName = 0x698;         // 20 or more

std::uint32_t Word(ByteReader header, std::uint64_t offset) {
  return header.U32LE(offset).value_or(0);
}

// Decodes a BCD word into four two-digit numbers. Returns nullopt if a digit is above 9.
std::optional<std::array<unsigned, 4>> Pairs(ByteReader header, std::uint64_t offset) {
  const auto bytes = header.ViewAt<4>(offset);
  if (!bytes) return std::nullopt;
  std::array<unsigned, 4> pairs = {};
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    const auto pair = FromBCD((*bytes)[pairs.size() - 1 - i]);
    if (!pair) return std::nullopt;
    pairs[i] = *pair;
  }
  return pairs;
}

// 8-4-4-4-12 digits, the first three groups byte-swapped.
std::string UUIDText(ByteReader header) {
  const auto bytes = header.ViewAt<16>(kUUID);
  if (!bytes) return {};
  constexpr std::size_t kOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
  std::string text;
  bool any = false;
  for (std::size_t i = 0; i < std::size(kOrder); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    const auto value = std::to_integer<unsigned>((*bytes)[kOrder[i]]);
    any = any || value != 0;
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02x", value & 0xFF);
    text += digits;
  }
  return any ? text : std::string();
}

void SetImage(ByteReader header, TXMPMeta& meta) {
  if (Word(header, kImageBlock) == 0) return;
  SetFrameSize(meta, Word(header, kWidth), Word(header, kHeight));
  SetFrameSize(meta, Word(header, kActiveWidth), Word(header, kActiveHeight));
}

void SetContent(ByteReader header, TXMPMeta& meta) {
  if (Word(header, kContentBlock) == 0) return;
  const std::uint32_t kelvin = Word(header, kWhiteBalance);
  if (kelvin >= 1000 && kelvin <= 50'000) {
    meta.SetProperty(kNsCRS, "WhiteBalance", std::to_string(kelvin) + "K");
  }
  const auto squeeze = std::bit_cast<float>(Word(header, kLensSqueeze));
  if (squeeze > 0.25F && squeeze < 4.0F) {
    SetPixelAspectRatio(meta, static_cast<std::uint64_t>(squeeze * 100 + 0.5F), 100);
  }
}

// The letter of the camera, or the first letter of the reel name.
std::string CameraLetter(ByteReader header) {
  const std::uint32_t index = Word(header, kCameraIndex);
  if (index >= 'A' && index <= 'Z') return std::string(1, static_cast<char>(index));
  const std::string reel = NativeText(header.CStringAt(kReel, 8));
  const bool letter = !reel.empty() && reel[0] >= 'A' && reel[0] <= 'Z';
  return letter ? reel.substr(0, 1) : std::string();
}

void SetCamera(ByteReader header, TXMPMeta& meta) {
  if (Word(header, kCameraBlock) == 0) return;
  std::string model = NativeText(header.CStringAt(kCameraModel, 20));
  if (model.empty()) model = NativeText(header.CStringAt(kCameraFamily, 8));
  meta.SetProperty(kNsDM, "cameraModel", model);
  meta.SetProperty(kNsTIFF, "Model", model);
  if (const std::uint32_t serial = Word(header, kSerialNumber); serial != 0) {
    meta.SetProperty(kNsAux, "SerialNumber", std::to_string(serial));
  }
  meta.SetProperty(kNsDM, "camera", CameraLetter(header));
  meta.SetProperty(kNsDC, "identifier", UUIDText(header));

  const auto date = Pairs(header, kCreationDate);
  const auto time = Pairs(header, kCreationTime);
  if (date && time) {
    const auto& [century, year, month, day] = *date;
    SetRecordingDate(
        meta, DateTime{century * 100 + year, month, day, (*time)[0], (*time)[1], (*time)[2], 0});
  }
  const Rate rate = Normalise(Rate{Word(header, kProjectRate), 1000});
  SetFrameRate(meta, rate);
  const auto code = Pairs(header, kMasterTimecode);
  if (!code || (*code)[0] > 23 || (*code)[1] > 59 || (*code)[2] > 59) return;
  SetStartTimecode(meta, Timecode{(*code)[0], (*code)[1], (*code)[2], (*code)[3], false}, rate);
}

void SetClip(ByteReader header, TXMPMeta& meta) {
  if (Word(header, kClipBlock) == 0) return;
  const auto set = [&](const char* name, std::uint64_t offset, std::uint64_t length) {
    meta.SetProperty(kNsDM, name, NativeText(header.CStringAt(offset, length)));
  };
  set("tapeName", kReel, 8);
  set("scene", kScene, 16);
  set("takeNumber", kTake, 8);
  set("director", kDirector, 32);
  set("directorPhotography", kCinematographer, 32);
  set("shotName", kClipName, 32);
  if (header.U8(kCircleTake) == 1) meta.SetProperty(kNsDM, "good", "True");
}

bool Recognises(const ReaderInput& input) { return input.head.Matches(0, kMagic); }

// A single frame has no duration: the length of a clip is its number of files.
void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (!Recognises(input)) return;
  const ByteReader header = input.head;
  TXMPMeta& meta = output.native;
  output.hasNative = true;
  meta.SetProperty(kNsTIFF, "Make", "ARRI");
  meta.SetProperty(kNsDM, "videoCompressor", "ARRIRAW");
  SetImage(header, meta);
  // Headers of older cameras have another layout after the image size.
  if (header.U32LE(kVersion) != kKnownVersion) return;
  SetContent(header, meta);
  SetCamera(header, meta);
  SetClip(header, meta);
}

}  // namespace

const Reader kAriReader = {"ARRIRAW", Recognises, Read};

}  // namespace Sorvik::xmp
