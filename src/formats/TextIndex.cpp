// SPDX-License-Identifier: MIT
#include "formats/TextIndex.h"

#include <algorithm>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Sorvik::formats {
namespace {

using Hestra::MakeString;

// A list of 4,700 clips has some 150,000 code units of names. The limits are above any real list
// and bound the memory for other ones.
constexpr std::size_t kMaxTotalLength = 500'000;
constexpr std::size_t kMaxLengths = 8;

}  // namespace

TextIndex::TextIndex(const std::vector<std::string>& texts) {
  texts_.reserve(texts.size());
  for (const std::string& text : texts) texts_.push_back(MakeString(text));
  for (std::size_t i = 0; i < texts_.size(); ++i) {
    totalLength_ += texts_[i].size();
    if (texts_[i].empty()) continue;
    firstIndex_.emplace(texts_[i], i);
    lengths_.insert(texts_[i].size());
  }
}

const TextIndex::Substrings* TextIndex::SubstringsOf(std::size_t length) const {
  const std::lock_guard lock(mutex_);
  const auto known = substrings_.find(length);
  if (known != substrings_.end()) return &known->second;
  if (totalLength_ > kMaxTotalLength || substrings_.size() >= kMaxLengths) return nullptr;
  Substrings& substrings = substrings_[length];
  for (std::size_t i = 0; i < texts_.size(); ++i) {
    const std::u16string_view text = texts_[i];
    for (std::size_t at = 0; at + length <= text.size(); ++at) {
      substrings.emplace(text.substr(at, length), i);
    }
  }
  return &substrings;
}

std::optional<std::size_t> TextIndex::FirstContaining(std::string_view part) const {
  if (part.empty()) return std::nullopt;
  const std::u16string units = MakeString(part);
  if (const Substrings* substrings = SubstringsOf(units.size())) {
    const auto found = substrings->find(units);
    return found == substrings->end() ? std::nullopt : std::optional(found->second);
  }
  const auto found = std::ranges::find_if(
      texts_, [&units](const std::u16string& text) { return text.find(units) != text.npos; });
  if (found == texts_.end()) return std::nullopt;
  return static_cast<std::size_t>(found - texts_.begin());
}

std::optional<std::size_t> TextIndex::FirstContainedIn(std::string_view text) const {
  const std::u16string units = MakeString(text);
  const std::u16string_view all = units;
  std::optional<std::size_t> first;
  for (const std::size_t length : lengths_) {
    if (length > all.size()) break;
    for (std::size_t at = 0; at + length <= all.size(); ++at) {
      const auto found = firstIndex_.find(all.substr(at, length));
      if (found == firstIndex_.end()) continue;
      first = std::min(first.value_or(found->second), found->second);
    }
  }
  return first;
}

}  // namespace Sorvik::formats
