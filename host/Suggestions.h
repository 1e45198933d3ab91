// SPDX-License-Identifier: MIT
// Suggestions for mistyped names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

struct Suggestion {
  std::string text;   // compared with what was typed
  std::string shown;  // the name that the user could type instead
};

// Returns the names nearest to `typed`, best first, separated by commas. Case-insensitive.
std::string NearestNames(const std::vector<Suggestion>& known, std::string_view typed);

}  // namespace host
