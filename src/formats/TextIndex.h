// SPDX-License-Identifier: MIT
// A substring search over many texts that doesn't scan all of them for each query: the index of a
// card is asked once for every clip. Texts are UTF-8. They are compared by 16-bit code units, so
// that a stray byte in a file name never matches a part of a character.
#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Sorvik::formats {

// The texts never change. Queries extend a cache, which a mutex protects: any thread.
class TextIndex {
 public:
  explicit TextIndex(const std::vector<std::string>& texts);
  TextIndex(const TextIndex&) = delete;
  TextIndex& operator=(const TextIndex&) = delete;

  // The index of the first text that contains `part`. An empty part is contained in no text.
  std::optional<std::size_t> FirstContaining(std::string_view part) const;
  // The index of the first text that is contained in `text`. An empty text is contained in none.
  std::optional<std::size_t> FirstContainedIn(std::string_view text) const;

 private:
  // Every substring of one length that occurs in the texts, with the index of the first such text.
  using Substrings = std::unordered_map<std::u16string_view, std::size_t>;

  // Returns null if a linear search is cheaper: the texts are long, or were queried with parts of
  // many lengths.
  const Substrings* SubstringsOf(std::size_t length) const;

  std::vector<std::u16string> texts_;
  std::size_t totalLength_ = 0;
  std::unordered_map<std::u16string_view, std::size_t> firstIndex_;  // of each text
  std::set<std::size_t> lengths_;
  mutable std::mutex mutex_;  // of substrings_; an element never changes
  mutable std::map<std::size_t, Substrings> substrings_;
};

}  // namespace Sorvik::formats
