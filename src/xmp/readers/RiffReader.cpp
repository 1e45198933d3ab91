// SPDX-License-Identifier: MIT
#include "xmp/readers/RiffReader.h"

#include "xmp/Namespaces.h"
#include "xmp/readers/AviHeader.h"
#include "xmp/readers/ExifTags.h"
#include "xmp/readers/Id3Tag.h"
#include "xmp/readers/PictureSize.h"
#include "xmp/readers/RiffTexts.h"
#include "xmp/readers/WaveFacts.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

constexpr std::uint32_t kAVI = FourCC("AVI ");
constexpr std::uint32_t kWAVE = FourCC("WAVE");
constexpr std::uint32_t kWebP = FourCC("WEBP");
constexpr std::uint32_t kList = FourCC("LIST");

constexpr std::uint64_t kMaxExifBytes = std::uint64_t{1} << 20;

// Properties for which the first frame of a DV file is read: all that it contains.
constexpr std::pair<const char*, const char*> kFrameFacts[] = {
    {kNsDM, "startTimecode"},         {kNsXMP, "CreateDate"},      {kNsDM, "shotDate"},
    {kNsDM, "videoPixelAspectRatio"}, {kNsDM, "videoFieldOrder"},  {kNsDM, "audioSampleRate"},
    {kNsDM, "audioSampleType"},       {kNsDM, "audioChannelType"}, {kNsDM, "videoFrameSize"},
    {kNsDM, "videoPixelDepth"},       {kNsDM, "videoFrameRate"},   {kNsDM, "videoCompressor"},
    {kNsDM, "audioCompressor"},
};

bool WantsFrame(const WantedProperties& wanted) {
  for (const auto& [schema, name] : kFrameFacts) {
    if (wanted.Wants(schema, name)) return true;
  }
  return false;
}

class RiffFile {
 public:
  RiffFile(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output)
      : file_(input), form_(input.head.U32BE(8).value_or(0)), wanted_(wanted), output_(output) {}

  // Long AVI files continue in further RIFF chunks.
  void Read() {
    RiffChunks top(file_, 0, file_.Size());
    bool first = true;
    while (auto riff = top.Next()) {
      const std::uint32_t id = riff->id;
      const bool wide = id == FourCC("RF64") || id == FourCC("BW64");
      if (id != FourCC("RIFF") && !wide) break;
      // RF64 stores its size elsewhere; a size of 0 was never written.
      if (first && (wide || riff->size == 0)) riff->size = file_.Size() - riff->body;
      first = false;
      ReadForm(*riff);
    }
    Finish();
  }

 private:
  void ReadForm(const RiffChunk& riff) {
    RiffChunks chunks(file_, riff);
    while (const auto chunk = chunks.Next()) {
      if (chunk->id == FourCC("_PMX") || chunk->id == FourCC("XMP ")) {
        if (output_.packet.empty()) output_.packet = file_.Copy(chunk->body, chunk->size);
      } else if (chunk->id == kList) {
        TakeList(*chunk);
      } else if (chunk->id == FourCC("id3 ") || chunk->id == FourCC("ID3 ")) {
        output_.hasNative |= SetId3Tag(file_, chunk->body, output_.native, output_.packet);
      } else if (form_ == kWAVE) {
        wave_.Take(file_, *chunk);
        const std::uint64_t bytes = wave_.DataBytes();
        if (chunk->id == FourCC("data") && bytes > UINT32_MAX) {
          chunks.Continue(chunk->body + bytes + bytes % 2);
        }
      } else if (chunk->id == FourCC("EXIF")) {
        TakeExif(*chunk);
      } else if (form_ == kWebP) {
        TakePicture(*chunk);
      }
    }
  }

  void TakeList(const RiffChunk& list) {
    switch (FormOf(file_, list)) {
      case FourCC("INFO"):
        SetInfoTexts(file_, list, output_.native);
        output_.hasNative |= !output_.native.Empty();
        break;
      case FourCC("Tdat"):
        SetTapeTexts(file_, list, output_.native);
        break;
      case FourCC("hdrl"):
        if (form_ == kAVI && !header_) header_.emplace(file_, list);
        break;
      case FourCC("movi"):
        if (!movi_) movi_ = list;
        break;
      default:
        break;
    }
  }

  // Some writers add the signature that belongs only into JPEG.
  void TakeExif(const RiffChunk& chunk) {
    const std::string bytes(ChunkBytes(file_, chunk, kMaxExifBytes).Text());
    const ByteReader block = foundation::ReaderOf(bytes);
    const bool signature = block.Matches(0, std::string_view("Exif\0\0", 6));
    output_.hasNative |= SetExifBlock(block.Clip(signature ? 6 : 0), output_.native);
    orientation_ = ExifOrientation(block.Clip(signature ? 6 : 0));
  }

  // The first chunk of a WebP picture has its size: the canvas, or the only frame (RFC 9649, 2.5 to
  // 2.7).
  void TakePicture(const RiffChunk& chunk) {
    constexpr std::uint64_t kHeaderBytes = 10;
    if (width_ != 0) return;
    const foundation::ByteReader body = ChunkBytes(file_, chunk, kHeaderBytes);
    if (chunk.id == FourCC("VP8X") && body.Holds(0, kHeaderBytes)) {
      width_ = (*body.U32LE(4) & 0xFF'FFFF) + 1;
      height_ = (*body.U32LE(6) >> 8) + 1;
    } else if (chunk.id == FourCC("VP8L") && body.U8(0) == 0x2F) {
      const std::uint32_t bits = body.U32LE(1).value_or(0);
      width_ = (bits & 0x3FFF) + 1;
      height_ = (bits >> 14 & 0x3FFF) + 1;
    } else if (chunk.id == FourCC("VP8 ") && body.Matches(3, "\x9D\x01\x2A")) {
      width_ = body.U16LE(6).value_or(0) & 0x3FFFU;
      height_ = body.U16LE(8).value_or(0) & 0x3FFFU;
    }
  }

  void Finish() {
    TXMPMeta facts;
    if (header_) {
      header_->Store(file_.Size(), facts);
      if (header_->HoldsDV() && movi_ && WantsFrame(wanted_)) {
        SetFirstDVFrame(file_, *movi_, facts);
      }
    }
    if (form_ == kWAVE) output_.hasNative |= wave_.Store(file_.Size(), facts);
    output_.hasNative |= header_.has_value();
    SetPictureSize(facts, width_, height_, orientation_);
    output_.hasNative |= width_ != 0 && height_ != 0;
    // The texts of an INFO list were written by a user, so they win.
    output_.native.FillFrom(facts);
  }

  FileWindow file_;
  std::uint32_t form_;
  const WantedProperties& wanted_;
  ReaderOutput& output_;
  std::optional<AviHeader> header_;
  std::optional<RiffChunk> movi_;
  WaveFacts wave_;
  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
  std::optional<std::uint64_t> orientation_;
};

bool Recognises(const ReaderInput& input) {
  const std::uint32_t id = input.head.U32BE(0).value_or(0);
  const std::uint32_t form = input.head.U32BE(8).value_or(0);
  if (id == FourCC("RF64") || id == FourCC("BW64")) return form == kWAVE;
  return id == FourCC("RIFF") && (form == kAVI || form == kWAVE || form == kWebP);
}

void Read(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output) {
  if (Recognises(input)) RiffFile(input, wanted, output).Read();
}

}  // namespace

const Reader kRiffReader = {"RIFF", Recognises, Read};

}  // namespace Sorvik::xmp
