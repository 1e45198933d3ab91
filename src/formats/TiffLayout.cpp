// SPDX-License-Identifier: MIT
#include "formats/TiffLayout.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <set>
#include <vector>

#include "foundation/ByteReader.h"
#include "foundation/CardFolder.h"

namespace Sorvik::formats {
namespace {

using foundation::ByteReader;
using platform::RegularFile;

enum Tag : std::uint16_t {
  kStripOffsets = 273,
  kStripByteCounts = 279,
  kTileOffsets = 324,
  kTileByteCounts = 325,
  kSubIFDs = 330,
  kTimeCodes = 51043,
  kFrameRate = 51044,
};

constexpr std::size_t kEntryBytes = 12;
constexpr std::size_t kMaxEntries = 1000;
constexpr std::size_t kMaxDirectories = 16;
constexpr std::size_t kMaxValues = 65536;  // strips or tiles of one image

class Walk {
 public:
  explicit Walk(const RegularFile& file) : file_(file) {}

  std::optional<TiffLayout> Run() {
    std::array<std::byte, 8> head{};
    if (file_.ReadAt(0, head) != head.size()) return std::nullopt;
    const ByteReader reader{head};
    bigEndian_ = reader.Matches(0, "MM");
    if (!bigEndian_ && !reader.Matches(0, "II")) return std::nullopt;
    if (reader.U16(2, bigEndian_) != 42) return std::nullopt;
    pending_.push_back(*reader.U32(4, bigEndian_));
    if (!ReadDirectory(Next())) return std::nullopt;
    while (!pending_.empty() && seen_.size() < kMaxDirectories) ReadDirectory(Next());
    return layout_;
  }

 private:
  struct Entry {
    std::uint16_t type = 0;
    std::uint32_t count = 0;
    std::uint32_t value = 0;        // or the offset of the values
    std::uint64_t valueOffset = 0;  // of the field `value` itself
  };

  std::uint32_t Next() {
    const std::uint32_t offset = pending_.back();
    pending_.pop_back();
    return offset;
  }

  bool ReadDirectory(std::uint32_t offset) {
    if (offset == 0 || !seen_.insert(offset).second) return false;
    std::array<std::byte, 2> count{};
    if (file_.ReadAt(offset, count) != count.size()) return false;
    const std::size_t entries =
        std::min<std::size_t>(*ByteReader{count}.U16(0, bigEndian_), kMaxEntries);
    std::vector<std::byte> bytes(entries * kEntryBytes + 4);
    bytes.resize(file_.ReadAt(offset + 2, bytes));
    const ByteReader reader{bytes};
    strips_ = {};
    for (std::size_t i = 0; i < entries; ++i) ReadEntry(reader, i * kEntryBytes, offset + 2);
    if (const auto next = reader.U32(entries * kEntryBytes, bigEndian_)) pending_.push_back(*next);
    AddEnds(strips_[0], strips_[1]);
    AddEnds(strips_[2], strips_[3]);
    return entries > 0 && bytes.size() >= entries * kEntryBytes;
  }

  void ReadEntry(ByteReader reader, std::size_t at, std::uint64_t base) {
    const auto tag = reader.U16(at, bigEndian_);
    const auto value = reader.U32(at + 8, bigEndian_);
    if (!tag || !value) return;
    const Entry entry{*reader.U16(at + 2, bigEndian_), *reader.U32(at + 4, bigEndian_), *value,
                      base + at + 8};
    if (*tag == kStripOffsets) strips_[0] = entry;
    if (*tag == kStripByteCounts) strips_[1] = entry;
    if (*tag == kTileOffsets) strips_[2] = entry;
    if (*tag == kTileByteCounts) strips_[3] = entry;
    if (*tag == kTimeCodes || *tag == kFrameRate) layout_.hasFrameRate = true;
    if (*tag == kSubIFDs) {
      for (const std::uint32_t offset : Values(entry)) pending_.push_back(offset);
    }
  }

  // The values of types SHORT (3), LONG (4) and IFD (13).
  std::vector<std::uint32_t> Values(const Entry& entry) const {
    const bool isShort = entry.type == 3;
    if (!isShort && entry.type != 4 && entry.type != 13) return {};
    const std::size_t size = isShort ? 2 : 4;
    const std::size_t count = std::min<std::size_t>(entry.count, kMaxValues);
    std::vector<std::byte> bytes(count * size);
    const bool isInline = bytes.size() <= 4;
    bytes.resize(file_.ReadAt(isInline ? entry.valueOffset : entry.value, bytes));
    const ByteReader reader{bytes};
    std::vector<std::uint32_t> values;
    for (std::size_t i = 0; i + size <= bytes.size(); i += size) {
      values.push_back(isShort ? *reader.U16(i, bigEndian_) : *reader.U32(i, bigEndian_));
    }
    return values;
  }

  void AddEnds(const Entry& offsets, const Entry& counts) {
    const auto from = Values(offsets);
    const auto bytes = Values(counts);
    for (std::size_t i = 0; i < std::min(from.size(), bytes.size()); ++i) {
      layout_.end = std::max(layout_.end, std::uint64_t{from[i]} + bytes[i]);
    }
  }

  const RegularFile& file_;
  bool bigEndian_ = false;
  std::vector<std::uint32_t> pending_;
  std::set<std::uint32_t> seen_;
  std::array<Entry, 4> strips_{};
  TiffLayout layout_;
};

}  // namespace

std::optional<TiffLayout> ReadTiffLayout(const RegularFile& file) { return Walk(file).Run(); }

std::optional<bool> HasFrameRate(const std::string& path) {
  const auto file = foundation::OpenOnCard(path);
  if (!file) return std::nullopt;
  const auto layout = ReadTiffLayout(*file);
  return layout ? std::optional(layout->hasFrameRate) : std::nullopt;
}

}  // namespace Sorvik::formats
