// SPDX-License-Identifier: MIT
// The structure of MXF files, without the meaning of items: partitions, and the sets of header
// metadata. Facts: SMPTE ST 377-1 (file format), ST 336 (KLV). Views borrow from the given bytes.
//
// Keys compare without byte 8, the registry version. Sets refer to each other by 16-byte ids. This
// module doesn't follow references, so cycles are harmless.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "foundation/ByteReader.h"

namespace Sorvik::xmp::mxf {

using foundation::ByteReader;

struct Key {
  std::array<std::uint8_t, 16> bytes{};

  // True if the key starts with `prefix`, ignoring byte 8.
  template <std::size_t N>
  bool Begins(const std::uint8_t (&prefix)[N]) const noexcept {
    static_assert(N <= 16);
    for (std::size_t i = 0; i < N; ++i) {
      if (i != 7 && bytes[i] != prefix[i]) return false;
    }
    return true;
  }
  friend auto operator<=>(const Key&, const Key&) = default;
};
std::optional<Key> KeyAt(ByteReader bytes, std::uint64_t offset);

struct KLV {
  Key key;
  ByteReader value;        // the available part of the value
  std::uint64_t next = 0;  // offset of the next item by the declared length; never before the value
};
// Returns the key, length and value at `offset`; nullopt if the key or length is truncated or the
// length is invalid.
std::optional<KLV> ReadKLV(ByteReader bytes, std::uint64_t offset);

// True for the keys of fill items, which are used for alignment.
bool IsFill(const Key& key) noexcept;

struct Partition {
  std::uint64_t end = 0;  // offset after the pack, in the given bytes
  bool header = false;
  bool open = false;
  bool complete = false;
  std::uint64_t footerOffset = 0;       // from the first partition; 0 unknown
  std::uint64_t headerBytes = 0;        // bytes of header metadata, counted from the primer; 0 none
  std::optional<Key> essenceContainer;  // the first one
};
// Returns the partition pack at `offset`; nullopt if there is none.
std::optional<Partition> ReadPartition(ByteReader bytes, std::uint64_t offset);

// Returns the offset of the first partition pack: 0 in nearly all files, otherwise after a run-in
// of less than 64 KiB.
std::optional<std::uint64_t> FindFirstPartition(ByteReader head);

// Returns the offset of the last partition, from the random index pack at the end of `tail`.
std::optional<std::uint64_t> LastPartitionOffset(ByteReader tail);

enum class SetKind : std::uint8_t {
  kSequence = 0x0F,
  kSourceClip = 0x11,
  kTimecodeComponent = 0x14,
  kContentStorage = 0x18,
  kGenericPicture = 0x27,
  kCDCIPicture = 0x28,
  kRGBAPicture = 0x29,
  kTapeDescriptor = 0x2E,
  kPreface = 0x2F,
  kIdentification = 0x30,
  kMaterialPackage = 0x36,
  kSourcePackage = 0x37,
  kTimelineTrack = 0x3B,
  kTaggedValue = 0x3F,
  kGenericSound = 0x42,
  kMultipleDescriptor = 0x44,
  kAES3Sound = 0x47,
  kWaveSound = 0x48,
  kMPEGPicture = 0x51,
};

// A local set: items of tag (2 bytes), length (2 bytes), data.
class LocalSet {
 public:
  LocalSet() = default;
  LocalSet(SetKind kind, ByteReader value) : kind_(kind), value_(value) {}

  SetKind Kind() const noexcept { return kind_; }
  // Returns the data of the first item with that tag; empty if it is missing or truncated. 0 is not
  // a valid tag.
  ByteReader Item(std::uint16_t tag) const noexcept;
  // Returns the references of an array item, at most `maxCount`.
  std::vector<Key> References(std::uint16_t tag, std::size_t maxCount) const;
  std::optional<Key> Reference(std::uint16_t tag) const { return KeyAt(Item(tag), 0); }

 private:
  SetKind kind_{};
  ByteReader value_;
};

// The header metadata of one partition.
class HeaderMetadata {
 public:
  // Reads the sets from `offset` up to the first item that isn't header metadata, or to the end.
  HeaderMetadata(ByteReader bytes, std::uint64_t offset);

  // In file order.
  const std::vector<LocalSet>& Sets() const noexcept { return sets_; }
  const LocalSet* First(SetKind kind) const noexcept;
  // Returns the set with that instance id, the first of duplicates; null if there is none.
  const LocalSet* Find(const std::optional<Key>& id) const noexcept;
  // Returns the local tag that the primer assigns to a registry item; 0 if none.
  std::uint16_t TagOf(const Key& item) const noexcept;

 private:
  std::vector<LocalSet> sets_;
  std::vector<std::pair<Key, std::size_t>>
      byId_;  // ordered, so that crafted ids can't degrade look-ups
  ByteReader primer_;
};

}  // namespace Sorvik::xmp::mxf
