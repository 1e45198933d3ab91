// SPDX-License-Identifier: MIT
#include "Suggestions.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

#include "SorvikProvider/foundation/UTF16String.h"

namespace host {
namespace {

using Text16 = Hestra::UTF16String;

constexpr std::size_t kMaxSuggestions = 3;

Text16 Folded(std::string_view text) {
  return tarnwick::utility::FoldCase(Hestra::MakeString(text));
}

// The Levenshtein distance.
std::size_t Distance(const Text16& one, const Text16& other) {
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < one.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < other.size(); ++j) {
      const std::size_t changed = diagonal + (one[i] == other[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string NearestNames(const std::vector<Suggestion>& known, std::string_view typed) {
  const Text16 wanted = Folded(typed);
  std::vector<std::pair<std::size_t, std::string>> ranked;
  for (const Suggestion& suggestion : known) {
    const Text16 text = Folded(suggestion.text);
    // A part of a name is nearer than a name with other letters.
    const std::size_t distance =
        text.find(wanted) != Text16::npos ? std::size_t{1} : Distance(wanted, text);
    ranked.emplace_back(distance, suggestion.shown);
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> names;
  for (const auto& [distance, name] : ranked) {
    if (names.size() == kMaxSuggestions) break;
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  }
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return list;
}

}  // namespace host
