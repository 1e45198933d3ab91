// SPDX-License-Identifier: MIT
#include "xmp/readers/PngReader.h"

#include <algorithm>

#include "foundation/Inflate.h"
#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/ExifTags.h"
#include "xmp/readers/FileWindow.h"
#include "xmp/readers/ImageResources.h"
#include "xmp/readers/IptcRecords.h"
#include "xmp/readers/NativeText.h"
#include "xmp/readers/PictureSize.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Facts: PNG (ISO/IEC 15948), clauses 5 and 11.3; eXIf of the PNG extensions.
constexpr std::string_view kSignature{"\x89PNG\r\n\x1A\n", 8};
constexpr std::string_view kXMPKeyword = "XML:com.adobe.xmp";
constexpr std::string_view kProfilePrefix = "Raw profile type ";
// A chunk: length of its data, type, data, checksum.
constexpr std::uint64_t kHeaderLength = 8;
constexpr std::uint64_t kFrameLength = 12;
// Writers put text chunks in front of the image data or at the end of the file.
constexpr std::uint64_t kTailLength = 64 * 1024;
constexpr unsigned kMaxChunks = 4096;
constexpr std::size_t kMaxTextBytes = 64 * 1024;

struct TextChunk {
  std::string_view keyword;
  std::string text;  // UTF-8
};

bool IsKnown(std::string_view kind) {
  return kind == "IHDR" || kind == "iTXt" || kind == "tEXt" || kind == "zTXt" || kind == "eXIf" ||
         kind == "tIME";
}

std::size_t MaxBytesOf(std::string_view keyword) {
  const bool binary = keyword == kXMPKeyword || keyword.starts_with(kProfilePrefix);
  return binary ? FileWindow::kMaxBytes : kMaxTextBytes;
}

// -1 unless `c` is a hexadecimal digit.
int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Decodes the text of a profile: a line with its name, one with its length, then hexadecimal
// digits. Some writers store Exif, IPTC and XMP in this form.
std::string ProfileBytes(std::string_view text) {
  const std::size_t name = text.find_first_not_of('\n');
  const std::size_t nameEnd = text.find('\n', name);
  if (nameEnd == text.npos) return {};
  const std::size_t digits = text.find('\n', nameEnd + 1);
  if (digits == text.npos) return {};
  std::string bytes;
  int high = -1;
  for (const char c : text.substr(digits)) {
    const int value = HexDigit(c);
    if (value < 0) continue;
    if (high >= 0) bytes.push_back(static_cast<char>(high * 16 + value));
    high = high < 0 ? value : -1;
  }
  return bytes;
}

// Removes a NUL-terminated text from the front; false if there is no NUL.
bool TakeCString(std::string_view& data, std::string_view& text) {
  const std::size_t end = data.find('\0');
  if (end == std::string_view::npos) return false;
  text = data.substr(0, end);
  data.remove_prefix(end + 1);
  return true;
}

// tEXt: keyword, NUL, Latin-1. zTXt: keyword, NUL, method 0, compressed Latin-1.
std::optional<TextChunk> LatinText(std::string_view data, bool packed) {
  TextChunk chunk;
  if (!TakeCString(data, chunk.keyword)) return std::nullopt;
  if (!packed) {
    chunk.text = Latin1Text(data);
  } else if (!data.empty() && data[0] == 0) {
    chunk.text = Latin1Text(foundation::Inflate(data.substr(1), MaxBytesOf(chunk.keyword)));
  }
  return chunk;
}

// iTXt: keyword, NUL, compression flag, method 0, language, NUL, translated keyword, NUL, UTF-8.
std::optional<TextChunk> InternationalText(std::string_view data) {
  TextChunk chunk;
  std::string_view language;
  std::string_view translated;
  if (!TakeCString(data, chunk.keyword) || data.size() < 2) return std::nullopt;
  const bool packed = data[0] == 1;
  data.remove_prefix(2);
  if (!TakeCString(data, language) || !TakeCString(data, translated)) return std::nullopt;
  const bool xmp = chunk.keyword == kXMPKeyword;
  const std::size_t maxBytes = MaxBytesOf(chunk.keyword);
  chunk.text = packed ? foundation::Inflate(data, maxBytes) : std::string(data.substr(0, maxBytes));
  if (!xmp) chunk.text = NativeText(chunk.text);
  return chunk;
}

class Chunks {
 public:
  Chunks(const ReaderInput& input, ReaderOutput& output)
      : file_(input), headSize_(input.head.Size()), output_(output) {}

  void Read() {
    std::uint64_t at = kSignature.size();
    for (unsigned i = 0; i < kMaxChunks && at < file_.Size(); ++i) {
      const ByteReader header = file_.At(at, kHeaderLength);
      const auto length = header.U32BE(0);
      if (!length || header.Size() < kHeaderLength) break;
      const std::string kind(header.TextAt(4, 4));
      if (IsKnown(kind)) Take(kind, file_.Copy(at + kHeaderLength, *length));
      if (kind == "IEND") return;
      const std::uint64_t next = at + kFrameLength + *length;
      if (kind == "IDAT" && next >= headSize_) {
        if (!tail_.tried && ReadTail(next)) return;
        at = AfterEqualChunks(at, *length);
      } else {
        at = next;
      }
    }
    TakeChain(foundation::ReaderOf(tail_.bytes), tail_.chain);
  }

  // Stores the size, which may be affected by an Exif block anywhere in the file.
  void Finish() {
    SetPictureSize(output_.native, width_, height_, orientation_);
    SetPixelDepth(output_.native, depth_);
    output_.hasNative |= width_ != 0 && height_ != 0;
  }

 private:
  // Finds the chunks in the last bytes of the file. They are accepted only if each leads to the
  // next and the last one ends the file, so that image data is never taken for a chunk. Returns
  // true if the chain includes image data: then no chunk after the image data is longer than the
  // tail.
  bool ReadTail(std::uint64_t from) {
    if (from >= file_.Size()) return true;
    const std::uint64_t maxBytes = std::min(kTailLength, file_.Size() - from);
    std::uint64_t start = 0;
    tail_.tried = true;
    tail_.bytes = file_.Tail(maxBytes, start).Text();
    const ByteReader bytes = foundation::ReaderOf(tail_.bytes);
    tail_.chain = bytes.Size();
    const std::uint64_t end = bytes.Size() < kFrameLength ? 0 : bytes.Size() - kFrameLength;
    for (std::uint64_t at = 0; at < end; ++at) {
      const std::string_view kind = bytes.TextAt(at + 4, 4);
      if ((!IsKnown(kind) && kind != "IDAT") || !LeadsToEnd(bytes, at)) continue;
      tail_.chain = at;
      if (kind != "IDAT" && start != from) return false;
      TakeChain(bytes, at);
      return true;
    }
    return false;
  }

  // Returns the offset after the chunks of image data with the same length as the one at `at`.
  // Encoders use one length for all but the last chunk, so that a binary search finds their end.
  std::uint64_t AfterEqualChunks(std::uint64_t at, std::uint32_t length) {
    const std::uint64_t stride = kFrameLength + length;
    const auto isEqual = [&](std::uint64_t index) {
      const ByteReader header = file_.At(at + index * stride, kHeaderLength);
      return header.U32BE(0) == length && header.Matches(4, "IDAT");
    };
    if (!isEqual(1)) return at + stride;
    std::uint64_t equal = 1;
    std::uint64_t other = (file_.Size() - at) / stride + 1;
    while (other - equal > 1) {
      const std::uint64_t middle = equal + (other - equal) / 2;
      (isEqual(middle) ? equal : other) = middle;
    }
    return at + (equal + 1) * stride;
  }

  static bool LeadsToEnd(ByteReader bytes, std::uint64_t at) {
    for (unsigned i = 0; i < kMaxChunks; ++i) {
      const auto length = bytes.U32BE(at);
      if (!length) return false;
      if (bytes.Matches(at + 4, "IEND")) return *length == 0;
      if (!bytes.Holds(at, kFrameLength + *length)) return false;
      at += kFrameLength + *length;
    }
    return false;
  }

  void TakeChain(ByteReader bytes, std::uint64_t at) {
    while (const auto length = bytes.U32BE(at)) {
      const std::string kind(bytes.TextAt(at + 4, 4));
      if (IsKnown(kind)) Take(kind, std::string(bytes.TextAt(at + kHeaderLength, *length)));
      at += kFrameLength + *length;
    }
  }

  void Take(const std::string& kind, const std::string& data) {
    if (kind == "IHDR") {
      TakeHeader(foundation::ReaderOf(data));
    } else if (kind == "eXIf") {
      TakeExif(foundation::ReaderOf(data));
    } else if (kind == "tIME") {
      TakeTime(foundation::ReaderOf(data));
    } else {
      const auto chunk = kind == "iTXt" ? InternationalText(data) : LatinText(data, kind == "zTXt");
      if (!chunk || chunk->text.empty()) return;
      if (chunk->keyword == kXMPKeyword) {
        TakePacket(chunk->text);
      } else if (chunk->keyword.starts_with(kProfilePrefix)) {
        TakeProfile(ProfileBytes(chunk->text));
      } else {
        output_.hasNative |= StoreText(*chunk);
      }
    }
  }

  void TakePacket(std::string_view packet) {
    if (output_.packet.empty()) output_.packet = packet;
  }

  void TakeHeader(ByteReader data) {
    width_ = data.U32BE(0).value_or(0);
    height_ = data.U32BE(4).value_or(0);
    depth_ = data.U8(8).value_or(0);
  }

  void TakeExif(ByteReader block) {
    TXMPMeta exif;
    output_.hasNative |= SetExifBlock(block, exif);
    output_.native.FillFrom(exif);
    if (!orientation_) orientation_ = ExifOrientation(block);
  }

  // Profiles are segments or resources as in JPEG files; their content shows which.
  void TakeProfile(const std::string& profile) {
    constexpr std::string_view kExif{"Exif\0\0", 6};
    constexpr std::string_view kXMP{"http://ns.adobe.com/xap/1.0/\0", 29};
    const ByteReader bytes = foundation::ReaderOf(profile);
    if (bytes.Matches(0, kExif)) {
      TakeExif(bytes.Clip(kExif.size()));
    } else if (bytes.Matches(0, kXMP)) {
      TakePacket(bytes.Clip(kXMP.size()).Text());
    } else if (bytes.Matches(0, "<")) {
      TakePacket(profile);
    } else if (bytes.Matches(0, "8BIM")) {
      ReadImageResources(bytes, output_);
    } else {
      output_.hasNative |= SetIptcRecords(bytes, output_.native);
    }
  }

  // Time of the last modification, in UTC.
  void TakeTime(ByteReader data) {
    if (!data.Holds(0, 7)) return;
    DateTime date;
    date.year = *data.U16BE(0);
    date.month = *data.U8(2);
    date.day = *data.U8(3);
    date.hour = *data.U8(4);
    date.minute = *data.U8(5);
    date.second = *data.U8(6);
    if (!date.Valid()) return;
    output_.native.SetProperty(kNsXMP, "ModifyDate", DateText(date) + "Z");
    output_.hasNative = true;
  }

  // Stores texts with registered keywords. Earlier values, from an Exif block or another text, are
  // kept.
  bool StoreText(const TextChunk& chunk) {
    TXMPMeta text;
    if (chunk.keyword == "Title") {
      text.SetLocalizedText(kNsDC, "title", "x-default", chunk.text);
    } else if (chunk.keyword == "Author") {
      SetCreators(text, chunk.text);
    } else if (chunk.keyword == "Description") {
      text.SetLocalizedText(kNsDC, "description", "x-default", chunk.text);
    } else if (chunk.keyword == "Copyright") {
      SetCopyright(text, chunk.text);
    } else if (chunk.keyword == "Creation Time") {
      text.SetProperty(kNsXMP, "CreateDate", ExifDate(chunk.text));
    } else if (chunk.keyword == "Software") {
      SetSoftware(text, chunk.text);
    } else if (chunk.keyword == "Comment") {
      text.SetProperty(kNsDM, "logComment", chunk.text);
    }
    const bool known = !text.Empty();
    output_.native.FillFrom(text);
    return known;
  }

  // The last bytes of the file, and the offset in them of the first chunk of the chain to the end.
  struct FileTail {
    bool tried = false;
    std::string bytes;
    std::uint64_t chain = 0;
  };

  FileWindow file_;
  std::uint64_t headSize_;
  ReaderOutput& output_;
  FileTail tail_;
  unsigned depth_ = 0;
  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
  std::optional<std::uint64_t> orientation_;
};

bool Recognises(const ReaderInput& input) { return input.head.Matches(0, kSignature); }

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (!Recognises(input)) return;
  Chunks chunks(input, output);
  chunks.Read();
  chunks.Finish();
}

}  // namespace

const Reader kPngReader = {"PNG", Recognises, Read};

}  // namespace Sorvik::xmp
