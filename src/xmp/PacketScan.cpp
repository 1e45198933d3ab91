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

// Returns the packet from the "<" of its header to the ">" of its trailer, with the zero bytes that
// belong to these characters; empty if the trailer isn't closed.
std::string_view Packet(std::string_view bytes, std::size_t begin, std::size_t end,
                        std::size_t stride) {
  constexpr std::size_t kMaxTrailerLength = 32;
  for (std::size_t i = kEnd.size(); i < kMaxTrailerLength; ++i) {
    const std::size_t at = end + i * stride;
    if (at >= bytes.size()) return {};
    if (bytes[at] != '>') continue;
    const std::size_t zeros = stride - 1;
    const bool bigEndian = stride > 1 && IsBigEndian(bytes, begin, stride);
    const std::size_t first = bigEndian && begin >= zeros ? begin - zeros : begin;
    const std::size_t last = bigEndian ? at : at + zeros;
    return bytes.substr(first, last + 1 - first);
  }
  return {};
}

std::string_view TextOf(const std::vector<std::byte>& bytes) {
  return foundation::ByteReader(bytes).Text();
}

}  // namespace

std::string_view FindPacket(std::string_view bytes) {
  constexpr std::array<std::size_t, 3> kStrides = {1, 2, 4};
  std::array<std::size_t, 3> begins;
  begins.fill(bytes.npos);
  std::string_view found;
  for (std::size_t at = bytes.find('<'); at != bytes.npos; at = bytes.find('<', at + 1)) {
    const char next = at + 1 < bytes.size() ? bytes[at + 1] : '\0';
    if (next != '?' && next != '\0')
      continue;  // neither a header nor the start of a UTF-16 or UTF-32 one
    for (std::size_t i = 0; i < kStrides.size(); ++i) {
      if (MatchesSpaced(bytes, at, kBegin, kStrides[i])) begins[i] = at;
      if (begins[i] == bytes.npos || !MatchesSpaced(bytes, at, kEnd, kStrides[i])) continue;
      const std::string_view packet = Packet(bytes, begins[i], at, kStrides[i]);
      if (!packet.empty()) found = packet;
      begins[i] = bytes.npos;
    }
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
