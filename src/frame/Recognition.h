// SPDX-License-Identifier: MIT
// How well a folder matches the layout of a structure. Every provider recognises its structure with
// this result, and one function turns it into the score of Provider::CanProvideFor.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace Sorvik {

enum class Recognition {
  kNone,             // another structure, or none
  kWithReservation,  // the structure, with something in it or next to it that doesn't belong there
  kClean,            // the structure in good order
};

constexpr Recognition Recognized(bool clean) {
  return clean ? Recognition::kClean : Recognition::kWithReservation;
}

constexpr int ScoreOf(Recognition recognition) {
  switch (recognition) {
    case Recognition::kClean:
      return 100;
    case Recognition::kWithReservation:
      return 40;
    case Recognition::kNone:
      break;
  }
  return 0;
}

// A name in the top folder of a structure.
struct LayoutName {
  std::string_view name;
  bool required;  // false: tolerated
};

// Matches the names of a folder, one after the other, with the table of a layout.
class LayoutMatch {
 public:
  // `names` outlives the match.
  explicit LayoutMatch(std::span<const LayoutName> names)
      : names_(names), seen_(names.size(), false) {}

  // Returns false if the layout has no such name. Names are compared exactly.
  bool Add(std::string_view name) {
    const auto known = std::ranges::find(names_, name, &LayoutName::name);
    if (known == names_.end()) return false;
    seen_[static_cast<std::size_t>(known - names_.begin())] = true;
    return true;
  }

  // True once all required names have been added.
  bool IsComplete() const {
    for (std::size_t i = 0; i < names_.size(); ++i) {
      if (names_[i].required && !seen_[i]) return false;
    }
    return true;
  }

 private:
  std::span<const LayoutName> names_;
  std::vector<bool> seen_;
};

}  // namespace Sorvik
