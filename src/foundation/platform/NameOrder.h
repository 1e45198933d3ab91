// SPDX-License-Identifier: MIT
// Ordering of file names, and sorting of large folders.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace Sorvik::platform {

// The order of names and paths in lists: by 16-bit code units. On UTF-8 it differs from the order
// of bytes only between U+E000..U+FFFF and the planes above.
bool LessByCodeUnits(std::string_view a, std::string_view b);

// The offset of the first byte that differs, or the length of the shorter text. Compares machine
// words, because names in one folder often share a long prefix.
std::size_t FirstDifference(std::string_view a, std::string_view b);

enum class NameOrder {
  kBytes,      // of entry keys
  kCodeUnits,  // of lists of paths
};

// The eight bytes of `name` at `start` as a big-endian number, padded with zeros. Numbers compare
// like the bytes, since names contain no NUL.
inline std::uint64_t NameKey(std::string_view name, std::size_t start) noexcept {
  std::uint64_t key = 0;
  for (std::size_t i = 0; i < sizeof(key); ++i) {
    const std::size_t at = start + i;
    key = key << 8 | (at < name.size() ? static_cast<unsigned char>(name[at]) : 0u);
  }
  return key;
}

// Sorts items by their member `name`. Names in a large folder mostly share a long prefix and differ
// in the few characters after it. These, packed into a number, decide nearly every comparison.
template <class Item>
void SortByName(std::vector<Item>& items, NameOrder order) {
  struct Keyed {
    std::uint64_t key;
    Item* item;
  };
  if (items.size() < 2) return;
  std::size_t shared = std::string_view(items.front().name).size();
  for (const Item& item : items) {
    shared = std::min(shared, FirstDifference(items.front().name, item.name));
  }
  std::vector<Keyed> keyed;
  keyed.reserve(items.size());
  std::uint64_t all = 0;
  for (Item& item : items) {
    keyed.push_back({NameKey(item.name, shared), &item});
    all |= keyed.back().key;
  }
  // The order of non-ASCII bytes may differ from that of code units.
  constexpr std::uint64_t kNonAscii = 0x8080808080808080;
  const bool byKey = order == NameOrder::kBytes || (all & kNonAscii) == 0;
  std::sort(keyed.begin(), keyed.end(), [=](const Keyed& a, const Keyed& b) {
    if (byKey && a.key != b.key) return a.key < b.key;
    if (order == NameOrder::kBytes) return a.item->name < b.item->name;
    return LessByCodeUnits(a.item->name, b.item->name);
  });
  std::vector<Item> sorted;
  sorted.reserve(items.size());
  for (const Keyed& entry : keyed) sorted.push_back(std::move(*entry.item));
  items = std::move(sorted);
}

}  // namespace Sorvik::platform
