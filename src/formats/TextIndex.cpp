// SPDX-License-Identifier: MIT
#include "formats/TextIndex.h"

#include <algorithm>
#include <utility>

namespace Sorvik::formats {
namespace {

// A list of 4,700 clips names them in some 150,000 units. Beyond these bounds no real list goes;
// they keep the memory of hostile ones bounded.
constexpr std::size_t kMaxTotalLength = 500'000;
constexpr std::size_t kMaxLengths = 8;

}  // namespace

TextIndex::TextIndex(std::vector<UTF16String> texts) : texts_(std::move(texts)) {
  for (std::size_t i = 0; i < texts_.size(); ++i) {
    totalLength_ += texts_[i].size();
    if (texts_[i].empty()) continue;
    places_.emplace(texts_[i], i);
    lengths_.insert(texts_[i].size());
  }
}

const TextIndex::Stretches* TextIndex::StretchesOf(std::size_t length) const {
  if (const auto known = stretches_.find(length); known != stretches_.end()) return &known->second;
  if (totalLength_ > kMaxTotalLength || stretches_.size() >= kMaxLengths) return nullptr;
  Stretches& stretches = stretches_[length];
  for (std::size_t i = 0; i < texts_.size(); ++i) {
    const std::u16string_view text = texts_[i];
    for (std::size_t at = 0; at + length <= text.size(); ++at) {
      stretches.emplace(text.substr(at, length), i);
    }
  }
  return &stretches;
}

std::optional<std::size_t> TextIndex::FirstHolding(std::u16string_view part) const {
  if (part.empty()) return std::nullopt;
  if (const Stretches* stretches = StretchesOf(part.size())) {
    const auto found = stretches->find(part);
    return found == stretches->end() ? std::nullopt : std::optional(found->second);
  }
  const auto found = std::ranges::find_if(
      texts_, [part](const UTF16String& text) { return text.find(part) != text.npos; });
  if (found == texts_.end()) return std::nullopt;
  return static_cast<std::size_t>(found - texts_.begin());
}

std::optional<std::size_t> TextIndex::FirstHeldBy(std::u16string_view whole) const {
  std::optional<std::size_t> first;
  for (const std::size_t length : lengths_) {
    if (length > whole.size()) break;
    for (std::size_t at = 0; at + length <= whole.size(); ++at) {
      const auto found = places_.find(whole.substr(at, length));
      if (found != places_.end()) first = std::min(first.value_or(found->second), found->second);
    }
  }
  return first;
}

}  // namespace Sorvik::formats
