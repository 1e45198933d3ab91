// SPDX-License-Identifier: MIT
#include "xmp/PacketScan.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "foundation/ByteReader.h"

namespace Sorvik::xmp {
namespace {

// Writers put the packet near the start of a file, or append it.
constexpr std::size_t kMaxCompleteScan = std::size_t{4} << 20;
constexpr std::size_t kHead = std::size_t{2} << 20;
constexpr std::size_t kTail = std::size_t{1} << 20;

constexpr std::string_view kBegin = "<?xpacket begin=";
constexpr std::string_view kEnd = "<?xpacket end=";

// Compares text whose characters are `stride` bytes apart with zeros between them.
bool MatchesSpaced(std::string_view bytes, std::size_t at, std::string_view text,
                   std::size_t stride) {
  if (at > bytes.size() || (bytes.size() - at) / stride < text.size()) return false;
  for (std::size_t i = 0; i < text.size() * stride; ++i) {
    const char wanted = i % stride == 0 ? text[i / stride] : '\0';
    // The zeros after the last character may belong to the next one.
    if (bytes[at + i] != wanted && i <= (text.size() - 1) * stride) return false;
  }
  return true;
}

// Whether the header at `begin` is big-endian, by the U+FEFF in its quotes. From the "<" on, the
// rest of the header looks the same in both byte orders.
bool IsBigEndian(std::string_view bytes, std::size_t begin, std::size_t stride) {
  const std::size_t quote = begin + kBegin.size() * stride;
  if (bytes.size() <= stride || quote >= bytes.size() - stride) return false;
  return bytes[quote + stride - 1] == '\xFE' && bytes[quote + stride] == '\xFF';
}

// Returns the length of a tag from its "<" to its ">" in bytes; 0 if it isn't closed within
// `maxCharacters`.
std::size_t TagLength(std::string_view bytes, std::size_t at, std::size_t maxCharacters,
                      std::size_t stride) {
  for (std::size_t i = 0; i < maxCharacters; ++i) {
    const std::size_t character = at + i * stride;
    if (character >= bytes.size()) return 0;
    if (bytes[character] == '>') return (i + 1) * stride;
  }
  return 0;
}

// Matches the end tag of a root element, with any prefix: "</x:xmpmeta>", "</rdf:RDF>".
bool IsRootEnd(std::string_view bytes, std::size_t at, std::size_t length, std::size_t stride) {
  constexpr std::string_view kNames[] = {"xmpmeta>", "xapmeta>", "RDF>"};
  if (!MatchesSpaced(bytes, at, "</", stride)) return false;
  for (const std::string_view name : kNames) {
    const std::size_t nameBytes = name.size() * stride;
    if (length > nameBytes && MatchesSpaced(bytes, at + length - nameBytes, name, stride)) {
      return true;
    }
  }
  return false;
}

// Collects the packets of one character width.
class PacketFinder {
 public:
  PacketFinder(std::string_view bytes, std::size_t stride) : bytes_(bytes), stride_(stride) {}

  // Examines the "<" at `at`. Returns a packet that ends here; empty if none does.
  std::string_view Visit(std::size_t at) {
    constexpr std::size_t kMaxTagLength = 64;
    if (MatchesSpaced(bytes_, at, kBegin, stride_)) {
      const std::string_view previous = UntilRootEnd();
      begin_ = at;
      rootEnd_ = 0;
      return previous;
    }
    if (begin_ == bytes_.npos) return {};
    const std::size_t length = TagLength(bytes_, at, kMaxTagLength, stride_);
    if (IsRootEnd(bytes_, at, length, stride_)) rootEnd_ = at + length;
    if (!MatchesSpaced(bytes_, at, kEnd, stride_)) return {};
    constexpr std::size_t kMaxTrailerLength = 32;
    const bool closed = length != 0 && length <= kMaxTrailerLength * stride_;
    const std::string_view packet = closed ? Until(at + length) : UntilRootEnd();
    begin_ = bytes_.npos;
    return packet;
  }
  // Returns the packet whose trailer is missing or truncated, if its root element is complete;
  // otherwise empty.
  std::string_view UntilRootEnd() const {
    return begin_ == bytes_.npos || rootEnd_ == 0 ? std::string_view() : Until(rootEnd_);
  }

 private:
  // From the "<" of the header, with the zero bytes that belong to the first and last character.
  std::string_view Until(std::size_t end) const {
    const std::size_t zeros = stride_ - 1;
    const bool bigEndian = stride_ > 1 && IsBigEndian(bytes_, begin_, stride_);
    const std::size_t shift = bigEndian && begin_ >= zeros ? zeros : 0;
    return bytes_.substr(begin_ - shift, end - begin_);
  }

  std::string_view bytes_;
  std::size_t stride_;
  std::size_t begin_ = std::string_view::npos;  // of the header
  std::size_t rootEnd_ = 0;                     // after the root element; 0 while it is open
};

std::string_view TextOf(const std::vector<std::byte>& bytes) {
  return foundation::ByteReader(bytes).Text();
}

}  // namespace

std::string_view FindPacket(std::string_view bytes) {
  std::array<PacketFinder, 3> finders = {PacketFinder(bytes, 1), PacketFinder(bytes, 2),
                                         PacketFinder(bytes, 4)};
  std::string_view found;
  for (std::size_t at = bytes.find('<'); at != bytes.npos; at = bytes.find('<', at + 1)) {
    const char next = at + 1 < bytes.size() ? bytes[at + 1] : '\0';
    if (next != '?' && next != '/' && next != '\0')
      continue;  // neither a header, nor an end tag, nor the start of a UTF-16 or UTF-32 one
    for (PacketFinder& finder : finders) {
      const std::string_view packet = finder.Visit(at);
      if (!packet.empty()) found = packet;
    }
  }
  for (const PacketFinder& finder : finders) {
    const std::string_view last = finder.UntilRootEnd();
    if (!last.empty()) found = last;
  }
  return found;
}

std::string ScanForPacket(const FileBytes& file) {
  const std::uint64_t size = file.Size();
  if (size > kMaxCompleteScan) {
    const auto tail = file.Read(size - kTail, kTail);
    const std::string_view packet = FindPacket(TextOf(tail));
    if (!packet.empty()) return std::string(packet);
  }
  const auto head = file.Read(0, size > kMaxCompleteScan ? kHead : kMaxCompleteScan);
  return std::string(FindPacket(TextOf(head)));
}

}  // namespace Sorvik::xmp
