// SPDX-License-Identifier: MIT
#include "xmp/readers/Id3Tag.h"

#include <algorithm>

#include "xmp/Namespaces.h"
#include "xmp/readers/IsoBoxes.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

constexpr std::uint64_t kHeaderLength = 10;
constexpr std::string_view kOwner{"XMP\0", 4};
constexpr unsigned kMaxFrames = 1024;
constexpr std::uint64_t kMaxTextBytes = 4096;

constexpr unsigned kUnsynchronised = 0x80;  // of the tag
constexpr unsigned kExtendedHeader = 0x40;
constexpr unsigned kFooter = 0x10;  // the header once more

struct TextFrame {
  std::uint32_t id;
  const char* property;  // of xmpDM
};
// Frames stored as one text property; SetText handles the others.
constexpr TextFrame kTextFrames[] = {
    {FourCC("TPE1"), "artist"},      {FourCC("TALB"), "album"},
    {FourCC("TCON"), "genre"},       {FourCC("TCOM"), "composer"},
    {FourCC("TRCK"), "trackNumber"}, {FourCC("TDRC"), "releaseDate"},
    {FourCC("TYER"), "releaseDate"},
};

// A number of 28 bits, 7 in each byte.
std::uint64_t SynchsafeNumber(ByteReader bytes, std::uint64_t at) {
  std::uint64_t value = 0;
  for (std::uint64_t i = 0; i < 4; ++i) value = value << 7 | (bytes.U8(at + i).value_or(0) & 0x7F);
  return value;
}

// Removes the zero that follows each 0xFF (section 6.1 of ID3v2.4).
std::string Resynchronised(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    text.push_back(bytes[i]);
    if (bytes[i] == '\xFF' && i + 1 < bytes.size() && bytes[i + 1] == '\0') ++i;
  }
  return text;
}

// The first text of a frame, after its encoding.
std::string TextOf(std::string_view frame) {
  if (frame.empty()) return {};
  const std::string_view text = frame.substr(1);
  switch (frame[0]) {
    case 0:
      return Latin1Text(text);
    case 1:
    case 2:
      return UTF16Text(text, true);
    case 3:
      return NativeText(text);
    default:
      return {};
  }
}

// Encoding, language, a description that ends with NUL, text. Comments with a description are
// values of programs.
std::string CommentOf(std::string_view frame) {
  constexpr std::size_t kLanguage = 3;
  if (frame.size() < 1 + kLanguage) return {};
  const bool wide = frame[0] == 1 || frame[0] == 2;
  std::string_view rest = frame.substr(1 + kLanguage);
  if (wide && rest.size() >= 2 && (rest.starts_with("\xFF\xFE") || rest.starts_with("\xFE\xFF"))) {
    rest.remove_prefix(2);
  }
  const std::string_view end = wide ? std::string_view("\0\0", 2) : std::string_view("\0", 1);
  if (!rest.starts_with(end)) return {};
  return TextOf(std::string(frame.substr(0, 1)).append(rest.substr(end.size())));
}

class Id3Tag {
 public:
  Id3Tag(FileWindow& file, std::uint64_t at) : file_(file), begin_(at) {
    const ByteReader header = file.At(at, kHeaderLength);
    version_ = header.U8(3).value_or(0);
    flags_ = header.U8(5).value_or(0);
    end_ = at + kHeaderLength + SynchsafeNumber(header, 6);
  }

  bool Read(TXMPMeta& meta, std::string& packet) {
    bool any = false;
    std::uint64_t at = begin_ + kHeaderLength + ExtendedHeaderLength();
    for (unsigned i = 0; i < kMaxFrames && at < end_; ++i) {
      const ByteReader header = file_.At(at, kHeaderLength);
      // Padding has no frame id.
      if (header.Size() < kHeaderLength || header.U8(0) == 0) break;
      const std::uint32_t id = header.U32BE(0).value_or(0);
      const std::uint64_t size =
          version_ == 4 ? SynchsafeNumber(header, 4) : header.U32BE(4).value_or(0);
      const unsigned flags = header.U16BE(8).value_or(0);
      at += kHeaderLength;
      if (size > end_ - at) break;
      if (id == FourCC("PRIV")) {
        if (packet.empty() && file_.At(at, kOwner.size()).Text() == kOwner) {
          packet = Unescaped(at + kOwner.size(), size - kOwner.size(), flags);
        }
      } else if (size <= kMaxTextBytes && (id >> 24 == 'T' || id == FourCC("COMM"))) {
        any |= SetText(id, Unescaped(at, size, flags), meta);
      }
      at += size;
    }
    return any;
  }

 private:
  // In ID3v2.3 the length doesn't include its own field.
  std::uint64_t ExtendedHeaderLength() {
    if ((flags_ & kExtendedHeader) == 0) return 0;
    const ByteReader length = file_.At(begin_ + kHeaderLength, 4);
    return version_ == 4 ? SynchsafeNumber(length, 0) : length.U32BE(0).value_or(0) + 4;
  }

  std::string Unescaped(std::uint64_t at, std::uint64_t size, unsigned flags) {
    constexpr unsigned kFrameUnsynchronised = 0x02;  // ID3v2.4 only
    const std::string bytes = file_.Copy(at, size);
    const bool escaped =
        (flags_ & kUnsynchronised) != 0 || (version_ == 4 && (flags & kFrameUnsynchronised) != 0);
    return escaped ? Resynchronised(bytes) : bytes;
  }

  static bool SetText(std::uint32_t id, const std::string& frame, TXMPMeta& meta) {
    const std::string text = id == FourCC("COMM") ? CommentOf(frame) : TextOf(frame);
    if (text.empty()) return false;
    if (id == FourCC("TIT2")) {
      meta.SetLocalizedText(kNsDC, "title", "x-default", text);
    } else if (id == FourCC("COMM")) {
      meta.SetProperty(kNsDM, "logComment", text);
    } else if (id == FourCC("TCOP")) {
      SetCopyright(meta, text);
    } else if (const auto* const known = std::ranges::find(kTextFrames, id, &TextFrame::id);
               known != std::end(kTextFrames)) {
      meta.SetProperty(kNsDM, known->property, text);
    } else {
      return false;
    }
    return true;
  }

  FileWindow& file_;
  std::uint64_t begin_;
  unsigned version_ = 0;
  unsigned flags_ = 0;
  std::uint64_t end_ = 0;
};

}  // namespace

bool IsId3Tag(ByteReader bytes) {
  const auto version = bytes.U8(3);
  return bytes.Matches(0, "ID3") && version && *version >= 2 && *version <= 4;
}

std::uint64_t EndOfId3Tag(ByteReader bytes) {
  if (!IsId3Tag(bytes)) return 0;
  const bool hasFooter = (bytes.U8(5).value_or(0) & kFooter) != 0;
  return kHeaderLength * (hasFooter ? 2 : 1) + SynchsafeNumber(bytes, 6);
}

bool SetId3Tag(FileWindow& file, std::uint64_t at, TXMPMeta& meta, std::string& packet) {
  const ByteReader header = file.At(at, kHeaderLength);
  if (!IsId3Tag(header) || header.U8(3) == 2) return false;
  return Id3Tag(file, at).Read(meta, packet);
}

}  // namespace Sorvik::xmp
