// SPDX-License-Identifier: MIT
// Lexical path operations on UTF-8 bytes and UTF-16 code units alike.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace Sorvik::platform {

// Removes repeated separators, "." components and a trailing separator; ".." removes the component
// in front of it. "/" stays. Never accesses the disk or follows links.
template <class Char>
std::basic_string<Char> NormalizePath(std::basic_string_view<Char> path) {
  constexpr Char kSlash = '/';
  constexpr Char kDots[] = {'.', '.'};
  using View = std::basic_string_view<Char>;
  const bool absolute = !path.empty() && path.front() == kSlash;
  std::basic_string<Char> result(absolute ? 1 : 0, kSlash);
  const std::size_t root = result.size();
  while (!path.empty()) {
    const auto end = std::min(path.find(kSlash), path.size());
    const View part = path.substr(0, end);
    path.remove_prefix(std::min(end + 1, path.size()));
    if (part.empty() || part == View(kDots, 1)) continue;
    if (part == View(kDots, 2)) {
      const auto parent = result.rfind(kSlash);
      result.resize(parent == result.npos ? root : std::max(parent, root));
      continue;
    }
    if (result.size() > root) result += kSlash;
    result += part;
  }
  return result;
}

}  // namespace Sorvik::platform
