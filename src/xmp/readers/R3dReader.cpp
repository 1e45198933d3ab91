// SPDX-License-Identifier: MIT
#include "xmp/readers/R3dReader.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "foundation/CardFolder.h"
#include "foundation/platform/FileSystem.h"
#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/FileWindow.h"
#include "xmp/readers/NativeText.h"
#include "xmp/readers/R3dDirectory.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;
using foundation::ReaderOf;

// Facts: the tables of public readers. Big-endian; blocks of size, type, data.
constexpr std::string_view kFirstGeneration = "RED1";
constexpr std::string_view kSecondGeneration = "RED2";
constexpr std::uint64_t kKind = 4;

// RED1.
constexpr std::uint64_t kWidth1 = 0x34;
constexpr std::uint64_t kHeight1 = 0x38;
constexpr std::uint64_t kRate1 = 0x3E;  // numerator, denominator
constexpr std::uint64_t kChannels1 = 0x42;
constexpr std::uint64_t kFileName1 = 0x43;
constexpr std::uint64_t kFileNameLength = 257;
constexpr std::uint64_t kDirectory1 = 0x22;  // in the second block
// The block at the end of a segment: offsets of four tables, then the number of frames.
constexpr std::uint64_t kEndLength = 56;
constexpr std::uint64_t kEndFrames = 24;

// RED2.
constexpr std::uint64_t kIdentifier2 = 0x10;
constexpr std::uint64_t kIdentifierLength = 32;
constexpr std::uint64_t kRecordCounts2 = 0x40;  // of three kinds of records
constexpr std::uint64_t kRecords2 = 0x44;
constexpr std::uint64_t kRecordLengths[] = {0x18, 0x14, 0x10};
constexpr std::uint64_t kWidth2 = 0x4C;
constexpr std::uint64_t kHeight2 = 0x50;
constexpr std::uint64_t kRate2 = 0x56;  // denominator of two bytes, numerator of four

// Tags of the directory.
enum Tag : std::uint16_t {
  kEdgeTimecode = 0x1000,
  kDayTimecode = 0x1001,
  kDateTime = 0x1005,
  kSerial = 0x1006,
  kCamera = 0x1019,
  kReel = 0x101A,
  kTake = 0x101B,
  kDate = 0x1023,
  kTime = 0x1024,
  kFirmware = 0x1025,
  kAspect = 0x1036,
  kFileName = 0x1056,
  kModel = 0x1071,
  kColorTemperature = 0x200D,
};

// "HH:MM:SS:FF"; a semicolon in front of the frames means drop frame.
std::optional<Timecode> ParseTimecode(std::string_view text) {
  if (text.size() != 11) return std::nullopt;
  std::array<unsigned, 4> parts = {};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    for (const char c : text.substr(i * 3, 2)) {
      if (c < '0' || c > '9') return std::nullopt;
      parts[i] = parts[i] * 10 + static_cast<unsigned>(c - '0');
    }
  }
  if (parts[0] > 23 || parts[1] > 59 || parts[2] > 59) return std::nullopt;
  return Timecode{parts[0], parts[1], parts[2], parts[3], text[8] == ';'};
}

// "YYYYMMDD" and "HHMMSS".
std::optional<DateTime> ParseCompactDate(const std::string& date, const std::string& time) {
  if (date.size() != 8 || time.size() != 6) return std::nullopt;
  std::string text = date;
  text.insert(6, "-").insert(4, "-").append("T");
  text.append(time).insert(15, ":").insert(13, ":");
  return ParseDate(text);
}

// "A106_C037_0118G5_002.R3D" is the second segment of the clip "A106_C037_0118G5".
std::string ClipName(std::string_view fileName) {
  const std::size_t point = fileName.rfind('.');
  std::string_view stem = fileName.substr(0, point);
  const std::size_t bar = stem.rfind('_');
  const bool numbered = bar != std::string_view::npos && stem.size() - bar == 4 &&
                        stem.find_first_not_of("0123456789", bar + 1) == std::string_view::npos;
  return std::string(numbered ? stem.substr(0, bar) : stem);
}

struct Head {
  bool second = false;  // generation
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  Rate rate;
  std::uint64_t directory = 0;
  std::string fileName;
};

Head ReadHead(ByteReader bytes) {
  Head head;
  head.second = bytes.Matches(kKind, kSecondGeneration);
  head.width = bytes.U32BE(head.second ? kWidth2 : kWidth1).value_or(0);
  head.height = bytes.U32BE(head.second ? kHeight2 : kHeight1).value_or(0);
  if (!head.second) {
    head.rate = {bytes.U16BE(kRate1).value_or(0), bytes.U16BE(kRate1 + 2).value_or(0)};
    head.directory = std::uint64_t{bytes.U32BE(0).value_or(0)} + kDirectory1;
    head.fileName = NativeText(bytes.Clip(kFileName1, kFileNameLength).Text());
    return head;
  }
  head.rate = {bytes.U32BE(kRate2 + 2).value_or(0), bytes.U16BE(kRate2).value_or(0)};
  head.directory = kRecords2;
  for (std::uint64_t i = 0; i < std::size(kRecordLengths); ++i) {
    head.directory += kRecordLengths[i] * bytes.U8(kRecordCounts2 + i).value_or(0);
  }
  return head;
}

// Sets the pixel aspect from the display aspect, "16:9": square pixels if it is close to that of
// the stored size.
void SetAspect(const Head& head, const std::string& displayAspect, TXMPMeta& meta) {
  const std::size_t colon = displayAspect.find(':');
  if (colon != std::string::npos) {
    const Rate x = DecimalFraction(std::string_view(displayAspect).substr(0, colon));
    const Rate y = DecimalFraction(std::string_view(displayAspect).substr(colon + 1));
    if (x.Known() && y.Known() && head.width != 0) {
      const double pixel = static_cast<double>(x.num) * static_cast<double>(y.den) * head.height /
                           (static_cast<double>(x.den) * static_cast<double>(y.num) * head.width);
      const bool square = pixel > 0.95 && pixel < 1.05;
      if (!square && pixel > 0.25 && pixel < 4) {
        return SetPixelAspectRatio(meta, static_cast<std::uint64_t>(pixel * 100 + 0.5), 100);
      }
    }
  }
  SetPixelAspectRatio(meta, 1, 1);
}

void SetTags(const Head& head, const R3dDirectory& directory, TXMPMeta& meta) {
  if (const auto code = ParseTimecode(directory.Text(kDayTimecode))) {
    SetStartTimecode(meta, *code, head.rate);
  }
  if (const auto code = ParseTimecode(directory.Text(kEdgeTimecode))) {
    meta.SetStructField(kNsDM, "altTimecode", kNsDM, "timeValue", TimecodeText(*code));
  }
  auto date = ParseCompactDate(directory.Text(kDate), directory.Text(kTime));
  if (const std::string both = directory.Text(kDateTime); !date && both.size() == 14) {
    date = ParseCompactDate(both.substr(0, 8), both.substr(8));
  }
  if (date) SetRecordingDate(meta, *date);
  if (const std::string firmware = directory.Text(kFirmware); !firmware.empty()) {
    SetSoftware(meta, "RED firmware " + firmware);
  }
  SetAspect(head, directory.Text(kAspect), meta);

  std::string name = directory.Text(kFileName);
  if (name.empty()) name = head.fileName;
  meta.SetProperty(kNsDM, "shotName", ClipName(name));
  meta.SetProperty(kNsDM, "shotNumber", directory.Text(kTake));
  meta.SetProperty(kNsDM, "takeNumber", directory.Text(kTake));
  meta.SetProperty(kNsDM, "camera", directory.Text(kCamera));
  meta.SetProperty(kNsDM, "tapeName", directory.Text(kCamera) + directory.Text(kReel));
  meta.SetProperty(kNsDM, "cameraModel", directory.Text(kModel));
  meta.SetProperty(kNsTIFF, "Model", directory.Text(kModel));
  meta.SetProperty(kNsAux, "SerialNumber", directory.Text(kSerial));
  const float kelvin = directory.Float(kColorTemperature).value_or(0);
  if (kelvin >= 1000 && kelvin <= 50'000) {
    meta.SetProperty(kNsCRS, "WhiteBalance", std::to_string(static_cast<int>(kelvin + 0.5F)) + "K");
  }
}

void SetIdentifier(ByteReader head, TXMPMeta& meta) {
  std::string hex;
  for (const std::byte byte : head.Clip(kIdentifier2, kIdentifierLength).Bytes()) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02x", std::to_integer<unsigned>(byte));
    hex += digits;
  }
  const bool any = hex.find_first_not_of('0') != std::string::npos;
  if (any && hex.size() == 2 * kIdentifierLength) meta.SetProperty(kNsDC, "identifier", hex);
}

// The audio blocks are interleaved with the video; the head contains only the number of channels.
void SetSound(ByteReader head, TXMPMeta& meta) {
  const unsigned channels = head.U8(kChannels1).value_or(0);
  if (channels == 0 || channels > 16) return;
  SetAudioChannels(meta, channels);
  SetAudioSampleBits(meta, 24);
  meta.SetProperty(kNsDM, "audioCompressor", "PCM");
}

// In the first generation the end block contains the number of frames of the segment. The second
// has no known counterpart.
void SetFrames(const ReaderInput& input, Rate rate, TXMPMeta& meta) {
  FileWindow file(input, kEndLength);
  std::uint64_t start = 0;
  const ByteReader end = file.Tail(kEndLength, start);
  const std::string_view kind = end.TextAt(kKind, 4);
  if (kind != "REOB" && kind != "REOF" && kind != "REOS") return;
  const std::uint64_t frames = end.U32BE(kEndFrames).value_or(0);
  // Each frame is a block.
  if (frames != 0 && frames <= input.file.Size() / 8) SetDuration(meta, frames, rate);
}

// Returns the XMP in an RMD file; the format of the rest is not public.
std::string PacketOf(std::string_view text) {
  constexpr std::pair<std::string_view, std::string_view> kRoots[] = {
      {"<x:xmpmeta", "</x:xmpmeta>"}, {"<rdf:RDF", "</rdf:RDF>"}};
  for (const auto& [begin, end] : kRoots) {
    const std::size_t from = text.find(begin);
    if (from == std::string_view::npos) continue;
    const std::size_t to = text.find(end, from);
    if (to != std::string_view::npos) return std::string(text.substr(from, to + end.size() - from));
  }
  return {};
}

// Desktop programs write one such file for all segments of a clip.
std::string PacketOfRmdFile(const std::string& path) {
  constexpr std::size_t kMaxBytes = std::size_t{1} << 20;
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return {};
  const std::string rmdPath =
      path.substr(0, slash + 1) + ClipName(std::string_view(path).substr(slash + 1)) + ".RMD";
  if (!foundation::MayExistOnCard(rmdPath)) return {};
  const auto bytes = foundation::ReadHeadOnCard(rmdPath, kMaxBytes);
  return bytes ? PacketOf(ByteReader{*bytes}.Text()) : std::string();
}

bool Recognises(const ReaderInput& input) {
  return input.head.Matches(0, std::string_view("\0\0", 2)) &&
         (input.head.Matches(kKind, kFirstGeneration) ||
          input.head.Matches(kKind, kSecondGeneration));
}

void Read(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output) {
  if (!Recognises(input)) return;
  const Head head = ReadHead(input.head);
  TXMPMeta& meta = output.native;
  output.hasNative = true;
  output.packet = PacketOfRmdFile(input.path);
  output.packetIsSidecar = true;
  meta.SetProperty(kNsTIFF, "Make", "RED");
  meta.SetProperty(kNsDM, "videoCompressor", "REDCODE");
  SetFrameSize(meta, head.width, head.height);
  SetFrameRate(meta, head.rate);
  SetTags(head, R3dDirectory(input.head, head.directory), meta);
  if (head.second) {
    SetIdentifier(input.head, meta);
  } else {
    SetSound(input.head, meta);
    if (wanted.Wants(kNsDM, "duration")) SetFrames(input, head.rate, meta);
  }
}

bool RecognisesRmd(const ReaderInput& input) {
  const std::string_view path = input.path;
  return path.ends_with(".RMD") || path.ends_with(".rmd");
}

void ReadRmd(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  FileWindow file(input);
  output.packet = PacketOf(file.At(0, std::uint64_t{1} << 20).Text());
}

}  // namespace

const Reader kR3dReader = {"RED", Recognises, Read};
const Reader kRmdReader = {"RED looks", RecognisesRmd, ReadRmd};

}  // namespace Sorvik::xmp
