// SPDX-License-Identifier: MIT
#include "xmp/readers/MXFSets.h"

#include <algorithm>
#include <string_view>

namespace Sorvik::xmp::mxf {

namespace {

constexpr std::uint8_t kPartitionPrefix[] = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01,
                                             0x01, 0x0D, 0x01, 0x02, 0x01, 0x01};
constexpr std::uint8_t kRandomIndexPack[] = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01, 0x01,
                                             0x0D, 0x01, 0x02, 0x01, 0x01, 0x11, 0x01};
constexpr std::uint8_t kPrimer[] = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01, 0x01,
                                    0x0D, 0x01, 0x02, 0x01, 0x01, 0x05, 0x01};
constexpr std::uint8_t kIndexSegment[] = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01,
                                          0x01, 0x0D, 0x01, 0x02, 0x01, 0x01, 0x10};
constexpr std::uint8_t kHeaderSet[] = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01,
                                       0x01, 0x0D, 0x01, 0x01, 0x01, 0x01, 0x01};
constexpr std::uint8_t kEssence[] = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x02,
                                     0x01, 0x01, 0x0D, 0x01, 0x03, 0x01};
constexpr std::uint8_t kFill[] = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01,
                                  0x01, 0x03, 0x01, 0x02, 0x10, 0x01};
constexpr std::size_t kKindAt = 14;         // of the key of a header set
constexpr std::size_t kPartitionKind = 13;  // 02 header, 03 body, 04 footer
constexpr std::size_t kPartitionStatus = 14;

// Header metadata of an editor's file contains some 2,000 sets.
constexpr std::size_t kMaxSets = 100'000;

constexpr std::uint16_t kInstanceUID = 0x3C0A;

struct Length {
  std::uint64_t value;
  std::uint64_t width;
};

// BER: values below 80 are the length itself, others the number of bytes that contain it.
std::optional<Length> ReadLength(ByteReader bytes, std::uint64_t offset) {
  const auto first = bytes.U8(offset);
  if (!first) return std::nullopt;
  if (*first < 0x80) return Length{*first, 1};
  const std::uint64_t count = *first & 0x7F;
  if (count == 0 || count > 8) return std::nullopt;
  std::uint64_t value = 0;
  for (std::uint64_t i = 1; i <= count; ++i) {
    const auto byte = bytes.U8(offset + i);
    if (!byte) return std::nullopt;
    value = value << 8 | *byte;
  }
  return Length{value, 1 + count};
}

bool EndsHeader(const Key& key) {
  return key.Begins(kPartitionPrefix) ? !key.Begins(kPrimer)
                                      : key.Begins(kEssence) || key.Begins(kIndexSegment);
}

}  // namespace

std::optional<Key> KeyAt(ByteReader bytes, std::uint64_t offset) {
  const auto view = bytes.ViewAt<16>(offset);
  if (!view) return std::nullopt;
  Key key;
  std::ranges::transform(*view, key.bytes.begin(),
                         [](std::byte b) { return std::to_integer<std::uint8_t>(b); });
  return key;
}

std::optional<KLV> ReadKLV(ByteReader bytes, std::uint64_t offset) {
  const auto key = KeyAt(bytes, offset);
  if (!key) return std::nullopt;
  const auto length = ReadLength(bytes, offset + 16);
  if (!length) return std::nullopt;
  KLV klv;
  klv.key = *key;
  const std::uint64_t start = offset + 16 + length->width;
  klv.value = bytes.Clip(start, length->value);
  // A length that overflows ends the iteration.
  klv.next = length->value > UINT64_MAX - start ? UINT64_MAX : start + length->value;
  return klv;
}

bool IsFill(const Key& key) noexcept { return key.Begins(kFill); }

std::optional<Partition> ReadPartition(ByteReader bytes, std::uint64_t offset) {
  // ThisPartition 8, PreviousPartition 16, FooterPartition 24, HeaderByteCount 32, ...,
  // EssenceContainers 80: count 4, size 4, labels.
  const auto klv = ReadKLV(bytes, offset);
  if (!klv || !klv->key.Begins(kPartitionPrefix)) return std::nullopt;
  const std::uint8_t kind = klv->key.bytes[kPartitionKind];
  const std::uint8_t status = klv->key.bytes[kPartitionStatus];
  if (kind < 2 || kind > 4) return std::nullopt;
  Partition partition;
  partition.end = klv->next;
  partition.header = kind == 2;
  partition.open = status == 1 || status == 3;
  partition.complete = status == 3 || status == 4;
  partition.footerOffset = klv->value.U64BE(24).value_or(0);
  partition.headerBytes = klv->value.U64BE(32).value_or(0);
  if (klv->value.U32BE(80).value_or(0) > 0) partition.essenceContainer = KeyAt(klv->value, 88);
  return partition;
}

std::optional<std::uint64_t> FindFirstPartition(ByteReader head) {
  if (ReadPartition(head, 0)) return 0;
  constexpr std::string_view kStart("\x06\x0E\x2B\x34\x02\x05\x01", 7);
  const std::string_view text = head.Text();
  for (auto at = text.find(kStart); at != std::string_view::npos; at = text.find(kStart, at + 1)) {
    const auto partition = ReadPartition(head, at);
    if (partition && partition->header) return at;
  }
  return std::nullopt;
}

std::optional<std::uint64_t> LastPartitionOffset(ByteReader tail) {
  // Entries of BodySID (4 bytes) and offset (8 bytes), then the length of the complete pack in 4
  // bytes.
  if (tail.Size() < 4) return std::nullopt;
  const std::uint64_t length = tail.U32BE(tail.Size() - 4).value_or(0);
  if (length > tail.Size()) return std::nullopt;
  const auto klv = ReadKLV(tail, tail.Size() - length);
  if (!klv || !klv->key.Begins(kRandomIndexPack) || klv->value.Size() < 16) return std::nullopt;
  const std::uint64_t items = (klv->value.Size() - 4) / 12;
  return klv->value.U64BE((items - 1) * 12 + 4);
}

ByteReader LocalSet::Item(std::uint16_t tag) const noexcept {
  if (tag == 0) return ByteReader();
  for (std::uint64_t at = 0;;) {
    const auto found = value_.U16BE(at);
    const auto length = value_.U16BE(at + 2);
    if (!found || !length) return ByteReader();
    if (*found == tag) return value_.Sub(at + 4, *length).value_or(ByteReader());
    at += 4 + std::uint64_t{*length};
  }
}

std::vector<Key> LocalSet::References(std::uint16_t tag, std::size_t maxCount) const {
  // Count 4, item size 4, items.
  std::vector<Key> keys;
  const ByteReader data = Item(tag);
  const std::uint64_t count = std::min<std::uint64_t>(data.U32BE(0).value_or(0), maxCount);
  if (data.U32BE(4) != 16) return keys;
  for (std::uint64_t i = 0; i < count; ++i) {
    const auto key = KeyAt(data, 8 + i * 16);
    if (!key) break;
    keys.push_back(*key);
  }
  return keys;
}

HeaderMetadata::HeaderMetadata(ByteReader bytes, std::uint64_t offset) {
  while (sets_.size() < kMaxSets) {
    const auto klv = ReadKLV(bytes, offset);
    if (!klv || EndsHeader(klv->key)) break;
    offset = klv->next;
    if (klv->key.Begins(kPrimer)) {
      if (primer_.Empty()) primer_ = klv->value;
      continue;
    }
    // Fill items and keys of other registries are skipped.
    if (!klv->key.Begins(kHeaderSet)) continue;
    const LocalSet set(static_cast<SetKind>(klv->key.bytes[kKindAt]), klv->value);
    if (const auto id = set.Reference(kInstanceUID)) byId_.emplace_back(*id, sets_.size());
    sets_.push_back(set);
  }
  std::ranges::sort(byId_);
}

const LocalSet* HeaderMetadata::First(SetKind kind) const noexcept {
  const auto found =
      std::ranges::find_if(sets_, [kind](const LocalSet& set) { return set.Kind() == kind; });
  return found == sets_.end() ? nullptr : &*found;
}

const LocalSet* HeaderMetadata::Find(const std::optional<Key>& id) const noexcept {
  if (!id) return nullptr;
  const auto found = std::ranges::lower_bound(byId_, *id, {}, &std::pair<Key, std::size_t>::first);
  const bool there = found != byId_.end() && found->first == *id;
  return there ? &sets_[found->second] : nullptr;
}

std::uint16_t HeaderMetadata::TagOf(const Key& item) const noexcept {
  // Count 4, size 18 in 4, then tag 2 and item 16.
  constexpr std::uint64_t kEntry = 18;
  const std::uint64_t count = std::min<std::uint64_t>(primer_.U32BE(0).value_or(0), 0xFFFF);
  for (std::uint64_t i = 0; i < count; ++i) {
    const auto key = KeyAt(primer_, 8 + i * kEntry + 2);
    if (!key) break;
    Key other = *key;
    other.bytes[7] = item.bytes[7];
    if (other == item) return primer_.U16BE(8 + i * kEntry).value_or(0);
  }
  return 0;
}

}  // namespace Sorvik::xmp::mxf
