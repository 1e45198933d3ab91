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

// True if `name` matches `pattern`, ignoring case (ASCII): "#" is a digit, "@" a letter, "*" either
// of them or "_", and any other character itself.
constexpr bool MatchesPattern(std::string_view name, std::string_view pattern) {
  constexpr auto upper = [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  };
  if (name.size() != pattern.size()) return false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char c = upper(name[i]);
    const bool digit = c >= '0' && c <= '9';
    const bool letter = c >= 'A' && c <= 'Z';
    const char wanted = pattern[i];
    const bool matches = wanted == '#'   ? digit
                         : wanted == '@' ? letter
                         : wanted == '*' ? digit || letter || c == '_'
                                         : c == upper(wanted);
    if (!matches) return false;
  }
  return true;
}

}  // namespace Sorvik
