// SPDX-License-Identifier: MIT
// Names that a camera builds from a fixed pattern of digits and separators.
#pragma once

#include <cstddef>
#include <string_view>

namespace Sorvik {

// True if `name` begins with the pattern `mask`, in which "#" is an ASCII digit and any other
// character is itself.
constexpr bool StartsWithMask(std::string_view name, std::string_view mask) {
  if (name.size() < mask.size()) return false;
  for (std::size_t i = 0; i < mask.size(); ++i) {
    const char c = name[i];
    if (mask[i] == '#' ? c < '0' || c > '9' : c != mask[i]) return false;
  }
  return true;
}

constexpr bool MatchesMask(std::string_view name, std::string_view mask) {
  return name.size() == mask.size() && StartsWithMask(name, mask);
}

}  // namespace Sorvik
