// SPDX-License-Identifier: MIT
#include <array>
#include <optional>

#include "formats/probe/Probes.h"

// Facts: SMPTE ST 377-1. A file is a chain of keys, lengths and values. The header partition pack
// contains the offset of the footer partition, after which only index tables and the random index
// pack follow.
namespace Sorvik::formats::probe {
namespace {

using foundation::ByteReader;

constexpr std::size_t kKeyBytes = 16;
constexpr std::size_t kMaxHeadBytes = kKeyBytes + 9;  // key and length
constexpr std::size_t kMaxRunIn = 65536;
constexpr std::string_view kPartitionKey{"\x06\x0E\x2B\x34\x02\x05\x01\x01\x0D\x01\x02\x01\x01",
                                         13};
constexpr std::uint64_t kFooterOffsetAt = 24;  // in the value of a partition pack
// Items from the head of a file without a footer, and from the footer to the end.
constexpr int kMaxItems = 256;

struct Item {
  ByteReader key;
  std::uint64_t valueAt;
  std::uint64_t end;
};

// Compares without byte 7, the version of the registry.
bool IsPartition(ByteReader bytes) {
  return bytes.Matches(0, kPartitionKey.substr(0, 7)) && bytes.Matches(8, kPartitionKey.substr(8));
}

// The end of the item whose first bytes are `head`; nullopt if key or length are cut off or the
// length is invalid.
std::optional<Item> ItemAt(std::uint64_t at, ByteReader head) {
  const auto first = head.U8(kKeyBytes);
  if (!first) return std::nullopt;
  std::uint64_t length = *first;
  std::uint64_t valueAt = at + kKeyBytes + 1;
  if (*first >= 0x80) {
    const unsigned count = *first & 0x7FU;
    if (count > 8) return std::nullopt;
    length = 0;
    for (unsigned i = 0; i < count; ++i) {
      const auto byte = head.U8(kKeyBytes + 1 + i);
      if (!byte) return std::nullopt;
      length = length << 8 | *byte;
    }
    valueAt += count;
  }
  const std::uint64_t end = length > UINT64_MAX - valueAt ? UINT64_MAX : valueAt + length;
  return Item{*head.Sub(0, kKeyBytes), valueAt, end};
}

// Walks the items from `at`. Passes if one of them ends at the end of the file.
MediaProbe WalkToEnd(const RegularFile& file, std::uint64_t at) {
  for (int i = 0; i < kMaxItems && at < file.Size(); ++i) {
    const auto bytes = ReadPart(file, at, kMaxHeadBytes);
    const ByteReader head{bytes};
    // Some writers pad the file with zeros.
    if (head.Size() < 4 || head.U32BE(0) == 0U) {
      return head.Size() < 4 ? Truncated("ends inside the head of an item") : Passed();
    }
    const auto item = ItemAt(at, head);
    if (!item) {
      return bytes.size() < kMaxHeadBytes ? Truncated("ends inside the head of an item") : Passed();
    }
    if (item->end > file.Size()) return TooShort(file, item->end, "its last item");
    at = item->end;
  }
  return Passed();
}

std::optional<std::uint64_t> FindHeader(ByteReader head) {
  const std::string_view text = head.Text();
  for (std::size_t at = text.find(kPartitionKey.substr(0, 7)); at != text.npos;
       at = text.find(kPartitionKey.substr(0, 7), at + 1)) {
    if (IsPartition(head.Clip(at))) return at;
  }
  return std::nullopt;
}

}  // namespace

MediaProbe ProbeMxf(const RegularFile& file) {
  const auto bytes = ReadPart(file, 0, kMaxRunIn + 256);
  const ByteReader head{bytes};
  const auto header = FindHeader(head);
  if (!header) return NotA("an MXF file");
  const auto pack = ItemAt(*header, head.Clip(*header, kMaxHeadBytes));
  const auto footer = pack ? head.U64BE(pack->valueAt + kFooterOffsetAt) : std::nullopt;
  if (!footer) return Truncated("ends inside the header partition pack");
  if (*footer == 0) return WalkToEnd(file, *header);
  if (*footer > UINT64_MAX - *header || *header + *footer >= file.Size()) {
    return Truncated("the footer partition at " + std::to_string(*footer) + " is missing");
  }
  const std::uint64_t footerAt = *header + *footer;
  const auto footerHead = ReadPart(file, footerAt, kMaxHeadBytes);
  if (footerHead.size() < kMaxHeadBytes) return Truncated("ends inside the footer partition");
  if (!IsPartition(ByteReader{footerHead})) {
    return Truncated("no footer partition at " + std::to_string(*footer));
  }
  return WalkToEnd(file, footerAt);
}

}  // namespace Sorvik::formats::probe
