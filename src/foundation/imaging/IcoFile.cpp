// SPDX-License-Identifier: MIT
#include "foundation/imaging/IcoFile.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "foundation/ByteReader.h"

namespace Sorvik::imaging {
namespace {

using foundation::ByteReader;

constexpr std::size_t kHeadBytes = 6;
constexpr std::size_t kEntryBytes = 16;
// Common files have a dozen entries. A side of at most 256 pixels limits the size of a picture.
constexpr std::size_t kMaxEntries = 256;
constexpr std::uint32_t kMaxPictureBytes = 4u << 20;

struct Entry {
  int area;
  int bits;
  std::uint32_t size;
  std::uint32_t offset;
  ByteReader record;
};

// A stored side of 0 means 256.
int Side(std::uint8_t stored) { return stored == 0 ? 256 : stored; }

std::optional<Entry> BestEntry(const ByteReader& directory, std::uint64_t fileSize) {
  std::optional<Entry> best;
  const std::size_t count = std::min<std::size_t>(directory.U16LE(4).value_or(0), kMaxEntries);
  for (std::size_t i = 0; i < count; ++i) {
    const auto record = directory.Sub(kHeadBytes + i * kEntryBytes, kEntryBytes);
    if (!record) break;
    const Entry entry{Side(*record->U8(0)) * Side(*record->U8(1)), *record->U16LE(6),
                      *record->U32LE(8), *record->U32LE(12), *record};
    const bool isValid = entry.size > 0 && entry.size <= kMaxPictureBytes &&
                         entry.offset <= fileSize && entry.size <= fileSize - entry.offset;
    if (!isValid) continue;
    if (!best || entry.area > best->area || (entry.area == best->area && entry.bits > best->bits)) {
      best = entry;
    }
  }
  return best;
}

// The header of an ICO file with one entry, directly followed by its picture.
std::vector<std::byte> SingleHead(const ByteReader& record) {
  std::vector<std::byte> head(kHeadBytes);
  head[2] = std::byte{1};
  head[4] = std::byte{1};
  const auto fields = record.Bytes().first(kEntryBytes - 4);
  head.insert(head.end(), fields.begin(), fields.end());
  head.resize(kHeadBytes + kEntryBytes);
  head[kHeadBytes + kEntryBytes - 4] = std::byte{kHeadBytes + kEntryBytes};
  return head;
}

}  // namespace

std::optional<IcoPicture> LargestIcoPicture(const ImageSource& source) {
  std::array<std::byte, kHeadBytes + kMaxEntries * kEntryBytes> space;
  const std::size_t got = source.ReadAt(0, space);
  const ByteReader directory(std::span<const std::byte>(space).first(got));
  const auto entry = BestEntry(directory, source.Size());
  if (!entry) return std::nullopt;
  std::vector<std::byte> bytes(entry->size);
  if (source.ReadAt(entry->offset, bytes) != bytes.size()) return std::nullopt;
  if (ByteReader(bytes).Matches(0, "\x89PNG\r\n\x1A\n")) return IcoPicture{std::move(bytes), true};
  auto single = SingleHead(entry->record);
  single.insert(single.end(), bytes.begin(), bytes.end());
  return IcoPicture{std::move(single), false};
}

}  // namespace Sorvik::imaging
