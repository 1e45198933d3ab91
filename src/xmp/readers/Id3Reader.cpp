// SPDX-License-Identifier: MIT
#include "xmp/readers/Id3Reader.h"

#include "xmp/readers/FileWindow.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Facts: ID3v2.3 and ID3v2.4, sections 3 and 4. XMP has no form in ID3v2.2.
constexpr std::uint64_t kHeaderLength = 10;
constexpr std::string_view kOwner{"XMP\0", 4};
constexpr unsigned kMaxFrames = 1024;

constexpr unsigned kUnsynchronised = 0x80;  // of the tag
constexpr unsigned kExtendedHeader = 0x40;

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

class Id3Tag {
 public:
  explicit Id3Tag(const ReaderInput& input)
      : file_(input),
        version_(input.head.U8(3).value_or(0)),
        flags_(input.head.U8(5).value_or(0)),
        end_(kHeaderLength + SynchsafeNumber(input.head, 6)) {}

  // Returns the packet of the first PRIV frame of XMP; empty if there is none.
  std::string ReadPacket() {
    std::uint64_t at = kHeaderLength + ExtendedHeaderLength();
    for (unsigned i = 0; i < kMaxFrames && at < end_; ++i) {
      const ByteReader header = file_.At(at, kHeaderLength);
      // Padding has no frame id.
      if (header.Size() < kHeaderLength || header.U8(0) == 0) return {};
      const std::uint64_t size =
          version_ == 4 ? SynchsafeNumber(header, 4) : header.U32BE(4).value_or(0);
      const bool isPrivate = header.Matches(0, "PRIV");
      const unsigned flags = header.U16BE(8).value_or(0);
      at += kHeaderLength;
      if (size > end_ - at) return {};
      if (isPrivate && file_.At(at, kOwner.size()).Text() == kOwner) return Packet(at, size, flags);
      at += size;
    }
    return {};
  }

 private:
  // In ID3v2.3 the length doesn't include its own field.
  std::uint64_t ExtendedHeaderLength() {
    if ((flags_ & kExtendedHeader) == 0) return 0;
    const ByteReader length = file_.At(kHeaderLength, 4);
    return version_ == 4 ? SynchsafeNumber(length, 0) : length.U32BE(0).value_or(0) + 4;
  }

  std::string Packet(std::uint64_t at, std::uint64_t size, unsigned flags) {
    constexpr unsigned kFrameUnsynchronised = 0x02;  // ID3v2.4 only
    const std::string bytes = file_.Copy(at + kOwner.size(), size - kOwner.size());
    const bool escaped =
        (flags_ & kUnsynchronised) != 0 || (version_ == 4 && (flags & kFrameUnsynchronised) != 0);
    return escaped ? Resynchronised(bytes) : bytes;
  }

  FileWindow file_;
  unsigned version_;
  unsigned flags_;
  std::uint64_t end_;
};

bool Recognises(const ReaderInput& input) {
  const auto version = input.head.U8(3);
  return input.head.Matches(0, "ID3") && version && *version >= 2 && *version <= 4;
}

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (!Recognises(input) || input.head.U8(3) == 2) return;
  output.packet = Id3Tag(input).ReadPacket();
}

}  // namespace

const Reader kId3Reader = {"ID3", Recognises, Read};

}  // namespace Sorvik::xmp
