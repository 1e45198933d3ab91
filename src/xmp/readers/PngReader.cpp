// SPDX-License-Identifier: MIT
#include "xmp/readers/PngReader.h"

#include "foundation/Inflate.h"
#include "xmp/Namespaces.h"
#include "xmp/readers/ExifTags.h"
#include "xmp/readers/FileWindow.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Facts: PNG (ISO/IEC 15948), clauses 5 and 11.3; eXIf of the PNG extensions.
constexpr std::string_view kSignature{"\x89PNG\r\n\x1A\n", 8};
constexpr std::string_view kXMPKeyword = "XML:com.adobe.xmp";
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
  return kind == "iTXt" || kind == "tEXt" || kind == "zTXt" || kind == "eXIf" || kind == "tIME";
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
    chunk.text = Latin1Text(foundation::Inflate(data.substr(1), kMaxTextBytes));
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
  const std::size_t maxBytes = xmp ? FileWindow::kMaxBytes : kMaxTextBytes;
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
      if (!length || header.Size() < kHeaderLength) return;
      const std::string kind(header.TextAt(4, 4));
      if (IsKnown(kind)) Take(kind, file_.Copy(at + kHeaderLength, *length));
      if (kind == "IEND") return;
      at += kFrameLength + *length;
      // Skip the image data: chunks after it are read from the tail.
      if (kind == "IDAT" && at >= headSize_) break;
    }
    if (at < file_.Size()) ReadTail(at);
  }

 private:
  // Finds the chunks in the last bytes of the file. They are accepted only if each leads to the
  // next and the last one ends the file, so that image data is never taken for a chunk.
  void ReadTail(std::uint64_t from) {
    const std::uint64_t maxBytes = std::min(kTailLength, file_.Size() - from);
    std::uint64_t start = 0;
    const std::string tail(file_.Tail(maxBytes, start).Text());
    const ByteReader bytes = foundation::ReaderOf(tail);
    const std::uint64_t end = bytes.Size() < kFrameLength ? 0 : bytes.Size() - kFrameLength;
    for (std::uint64_t at = 0; at < end; ++at) {
      if (IsKnown(bytes.TextAt(at + 4, 4)) && LeadsToEnd(bytes, at)) {
        TakeChain(bytes, at);
        return;
      }
    }
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
    if (kind == "eXIf") {
      output_.hasNative |= SetExifBlock(foundation::ReaderOf(data), output_.native);
    } else if (kind == "tIME") {
      TakeTime(foundation::ReaderOf(data));
    } else {
      const auto chunk = kind == "iTXt" ? InternationalText(data) : LatinText(data, kind == "zTXt");
      if (!chunk || chunk->text.empty()) return;
      if (chunk->keyword != kXMPKeyword) {
        output_.hasNative |= StoreText(*chunk);
      } else if (output_.packet.empty()) {
        output_.packet = chunk->text;
      }
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

  FileWindow file_;
  std::uint64_t headSize_;
  ReaderOutput& output_;
};

bool Recognises(const ReaderInput& input) { return input.head.Matches(0, kSignature); }

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (Recognises(input)) Chunks(input, output).Read();
}

}  // namespace

const Reader kPngReader = {"PNG", Recognises, Read};

}  // namespace Sorvik::xmp
