// SPDX-License-Identifier: MIT
#include "xmp/readers/AviHeader.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "xmp/Namespaces.h"
#include "xmp/readers/CodecNames.h"
#include "xmp/readers/DVFrame.h"
#include "xmp/readers/NativeText.h"
#include "xmp/readers/RiffTexts.h"
#include "xmp/readers/WaveFacts.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;
using foundation::ReaderOf;

// avih.
constexpr std::uint64_t kMicrosecondsPerFrame = 0;
constexpr std::uint64_t kTotalFrames = 16;
constexpr std::uint64_t kWidth = 32;
constexpr std::uint64_t kHeight = 36;
// strh.
constexpr std::uint64_t kKind = 0;
constexpr std::uint64_t kHandler = 4;
constexpr std::uint64_t kScale = 20;
constexpr std::uint64_t kRate = 24;
constexpr std::uint64_t kLength = 32;
// strf of video.
constexpr std::uint64_t kBitmapWidth = 4;
constexpr std::uint64_t kBitmapHeight = 8;  // negative for top-down rows
constexpr std::uint64_t kBitmapBits = 14;
constexpr std::uint64_t kBitmapCompression = 16;
// A larger width or height is invalid.
constexpr std::uint32_t kMaxPixels = 100'000;
// vprp.
constexpr std::uint64_t kFrameAspect = 20;
// The first bytes of a chunk that have all fields in use.
constexpr std::uint64_t kHeaderBytes = 56;  // avih, strh
constexpr std::uint64_t kDateBytes = 64;
constexpr std::uint64_t kFormatBytes = 256;
constexpr std::uint64_t kPropertyBytes = 64;
// Standard definition (ITU-R BT.601).
constexpr std::uint32_t kStandardWidths[] = {704, 720};
constexpr std::uint32_t kMaxStandardHeight = 576;

constexpr std::uint32_t kVideo = FourCC("vids");
constexpr std::uint32_t kInterleaved = FourCC("iavs");
constexpr std::uint32_t kAudio = FourCC("auds");

// The absolute value of a two's complement number.
std::uint32_t SizeOf(std::uint32_t value) { return (value & 0x80000000) != 0 ? ~value + 1 : value; }

// Rounds rates that are stored as integer microseconds, such as 1000000/66666, to an integer rate.
Rate SnapToInteger(Rate rate) {
  if (!rate.Known()) return rate;
  constexpr double kTolerance = 1e-4;
  const std::uint64_t integer = (rate.num + rate.den / 2) / rate.den;
  const double quotient =
      static_cast<double>(rate.num) / static_cast<double>(rate.den) / static_cast<double>(integer);
  return integer != 0 && std::abs(quotient - 1) < kTolerance ? Rate{integer, 1} : rate;
}

// Chunk ids of samples are the stream number and a type of two letters.
bool IsPicture(std::uint32_t id) {
  const std::uint32_t kind = id & 0xFFFF;
  return kind == FourCC("dc") || kind == FourCC("db") || kind == FourCC("__");
}

}  // namespace

AviHeader::AviHeader(FileWindow& file, const RiffChunk& hdrl) {
  RiffChunks chunks(file, hdrl);
  while (const auto chunk = chunks.Next()) {
    if (chunk->id == FourCC("avih")) {
      const ByteReader avih = ChunkBytes(file, *chunk, kHeaderBytes);
      microsecondsPerFrame_ = avih.U32LE(kMicrosecondsPerFrame).value_or(0);
      frames_ = avih.U32LE(kTotalFrames).value_or(0);
      width_ = avih.U32LE(kWidth).value_or(0);
      height_ = avih.U32LE(kHeight).value_or(0);
    } else if (chunk->id == FourCC("IDIT")) {
      date_ = NativeText(ChunkBytes(file, *chunk, kDateBytes).Text());
    } else if (chunk->id == FourCC("LIST")) {
      const std::uint32_t form = FormOf(file, *chunk);
      if (form == FourCC("strl")) ReadStream(file, *chunk);
      if (form != FourCC("odml")) continue;
      RiffChunks extended(file, *chunk);
      const auto dmlh = extended.Next();
      if (dmlh && dmlh->id == FourCC("dmlh")) {
        const std::uint32_t all = ChunkBytes(file, *dmlh, 4).U32LE(0).value_or(0);
        frames_ = std::max<std::uint64_t>(frames_, all);
      }
    }
  }
}

void AviHeader::ReadStream(FileWindow& file, const RiffChunk& strl) {
  Stream stream;
  RiffChunks chunks(file, strl);
  while (const auto chunk = chunks.Next()) {
    if (chunk->id == FourCC("strh")) {
      const ByteReader strh = ChunkBytes(file, *chunk, kHeaderBytes);
      stream.kind = strh.U32BE(kKind).value_or(0);
      stream.handler = strh.TextAt(kHandler, 4);
      stream.rate = {strh.U32LE(kRate).value_or(0), strh.U32LE(kScale).value_or(0)};
      stream.length = strh.U32LE(kLength).value_or(0);
    } else if (chunk->id == FourCC("strf")) {
      stream.format = ChunkBytes(file, *chunk, kFormatBytes).Text();
    } else if (chunk->id == FourCC("vprp")) {
      stream.aspect = ChunkBytes(file, *chunk, kPropertyBytes).U32LE(kFrameAspect).value_or(0);
    }
  }
  const bool picture = stream.kind == kVideo || stream.kind == kInterleaved;
  if (picture && !picture_) picture_ = std::move(stream);
  if (stream.kind == kAudio && !sound_) sound_ = std::move(stream);
}

// Interlaced DV streams ('iavs') have another record instead of the bitmap header.
std::string AviHeader::Codec(const Stream& picture) {
  if (picture.kind == kInterleaved) return "DV";
  const ByteReader format = ReaderOf(picture.format);
  if (format.U32LE(kBitmapCompression) == 0) return "Uncompressed";
  const std::string stored = VideoCodecName(format.TextAt(kBitmapCompression, 4));
  return stored.empty() ? VideoCodecName(picture.handler) : stored;
}

// Bits per component; 0 unknown. Uncompressed pictures have three or four components of 8 bits.
unsigned AviHeader::DepthOf(const Stream& picture) {
  const ByteReader format = ReaderOf(picture.format);
  if (picture.kind != kVideo) return 8;  // DV
  if (format.U32LE(kBitmapCompression) != 0) {
    return BitsOfVideoCodec(format.TextAt(kBitmapCompression, 4));
  }
  const unsigned bits = format.U16LE(kBitmapBits).value_or(0);
  return bits == 24 || bits == 32 ? 8 : 0;
}

bool AviHeader::HoldsDV() const { return picture_ && Codec(*picture_).starts_with("DV"); }

void AviHeader::Store(std::uint64_t fileBytes, TXMPMeta& meta) const {
  SetRiffDate(date_, meta);
  SetFrameSize(meta, width_, height_);
  Rate rate{1'000'000, microsecondsPerFrame_};
  std::uint64_t frames = frames_;
  if (picture_) {
    StorePicture(meta);
    if (picture_->rate.Known()) rate = picture_->rate;
    if (picture_->length != 0) frames = std::max(frames, picture_->length);
  }
  rate = SnapToInteger(rate);
  SetFrameRate(meta, rate);
  if (frames != 0) {
    SetDuration(meta, frames, rate);
    if (rate.Known()) SetFileDataRate(meta, fileBytes, frames * rate.den, rate.num);
  }
  if (sound_) SetWaveFormat(ReadWaveFormat(ReaderOf(sound_->format)), meta);
}

void AviHeader::StorePicture(TXMPMeta& meta) const {
  meta.SetProperty(kNsDM, "videoCompressor", Codec(*picture_));
  const ByteReader format = ReaderOf(picture_->format);
  const std::uint32_t width = SizeOf(format.U32LE(kBitmapWidth).value_or(0));
  const std::uint32_t height = SizeOf(format.U32LE(kBitmapHeight).value_or(0));
  SetPixelDepth(meta, DepthOf(*picture_));
  if (picture_->kind != kVideo || width > kMaxPixels || height > kMaxPixels) return;
  SetFrameSize(meta, width, height);
  const std::uint64_t x = picture_->aspect >> 16;
  const std::uint64_t y = picture_->aspect & 0xFFFF;
  SetPixelAspectRatio(meta, x * height, y * width);
  // A standard-definition file without an aspect ratio may have any; a larger one has square
  // pixels.
  const bool standard = height <= kMaxStandardHeight &&
                        std::ranges::find(kStandardWidths, width) != std::end(kStandardWidths);
  if (picture_->aspect == 0 && !standard) SetPixelAspectRatio(meta, width, width);
}

void SetFirstDVFrame(FileWindow& file, const RiffChunk& movi, TXMPMeta& meta) {
  constexpr unsigned kMaxChunks = 16;  // index and padding chunks may precede it
  RiffChunks chunks(file, movi);
  for (unsigned i = 0; i < kMaxChunks; ++i) {
    const auto chunk = chunks.Next();
    if (!chunk) return;
    if (!IsPicture(chunk->id)) continue;
    const auto facts = ReadDVFrame(ChunkBytes(file, *chunk, kMaxDVFrameBytes));
    if (!facts) return;
    TXMPMeta frame;
    SetDVFacts(*facts, frame);
    // Facts that the header is reliable for are kept, so they don't depend on whether the frame was
    // read.
    for (const char* name : {"videoCompressor", "videoFrameRate", "audioCompressor"}) {
      frame.TakeFrom(meta, kNsDM, name);
    }
    frame.FillFrom(meta);
    meta = std::move(frame);
    return;
  }
}

}  // namespace Sorvik::xmp
