// SPDX-License-Identifier: MIT
// The structure of an MXF file below the meaning of its items: partitions, and the sets of header
// metadata. Facts: SMPTE ST 377-1 (file format), ST 336 (KLV). Views borrow from the bytes given.
//
// Keys compare without byte 8, the version of the registry. Sets refer to each other by 16-byte
// ids; nothing here follows references, so there are no loops to fall into.
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

  // True if the first bytes are those of `prefix`, byte 8 aside.
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
  ByteReader value;        // what is there of it
  std::uint64_t next = 0;  // offset behind it by its declared length; never before the value
};
// The key, length and value at `offset`; nothing if key or length aren't whole or the length's form
// is none.
std::optional<KLV> ReadKLV(ByteReader bytes, std::uint64_t offset);

// True for the keys of fill, which stands for alignment.
bool IsFill(const Key& key) noexcept;

struct Partition {
  std::uint64_t end = 0;  // offset behind the pack, in the bytes given
  bool header = false;
  bool open = false;
  bool complete = false;
  std::uint64_t footerOffset = 0;       // from the first partition; 0 unknown
  std::uint64_t headerBytes = 0;        // of header metadata, counted from the primer; 0 none
  std::optional<Key> essenceContainer;  // the first
};
// The partition pack at `offset`; nothing if there is none.
std::optional<Partition> ReadPartition(ByteReader bytes, std::uint64_t offset);

// Where the first partition pack begins: at 0 in nearly all files, else behind a run-in of less
// than 64 KiB.
std::optional<std::uint64_t> FindFirstPartition(ByteReader head);

// Offset of the last partition by the random index pack that ends in the last byte of `tail`.
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

// A local set: items of tag (2), length (2), data.
class LocalSet {
 public:
  LocalSet() = default;
  LocalSet(SetKind kind, ByteReader value) : kind_(kind), value_(value) {}

  SetKind Kind() const noexcept { return kind_; }
  // The data of the first item with that tag; empty if there is none or it is cut. 0 is no tag.
  ByteReader Item(std::uint16_t tag) const noexcept;
  // The references of an array item, at most `most`.
  std::vector<Key> References(std::uint16_t tag, std::size_t most) const;
  std::optional<Key> Reference(std::uint16_t tag) const { return KeyAt(Item(tag), 0); }

 private:
  SetKind kind_{};
  ByteReader value_;
};

// The header metadata of one partition.
class HeaderMetadata {
 public:
  // Reads the sets from `offset` on, to the first thing that isn't header metadata, or to the end.
  HeaderMetadata(ByteReader bytes, std::uint64_t offset);

  // Sets in file order.
  const std::vector<LocalSet>& Sets() const noexcept { return sets_; }
  const LocalSet* First(SetKind kind) const noexcept;
  // The set with that instance id; null if there is none. The first of equals.
  const LocalSet* Find(const std::optional<Key>& id) const noexcept;
  // The local tag that the primer gives an item of the registry; 0 if none.
  std::uint16_t TagOf(const Key& item) const noexcept;

 private:
  std::vector<LocalSet> sets_;
  std::vector<std::pair<Key, std::size_t>>
      byId_;  // in order, so that no choice of ids makes it slow
  ByteReader primer_;
};

}  // namespace Sorvik::xmp::mxf
