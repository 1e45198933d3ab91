// SPDX-License-Identifier: MIT
#include "providers/sequences/NumberedNames.h"

#include <algorithm>
#include <charconv>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"

namespace Sorvik::sequences {

using foundation::CardFolder;
using foundation::FoldCase;

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

std::optional<NumberedName> SplitNumber(const std::string& name) {
  const auto dot = std::min(name.rfind('.'), name.size());
  const auto last =
      std::find_if(name.rend() - static_cast<std::ptrdiff_t>(dot), name.rend(), IsDigit);
  if (last == name.rend()) return std::nullopt;
  const auto first = std::find_if_not(last, name.rend(), IsDigit);
  const auto begin = static_cast<std::size_t>(first.base() - name.begin());
  const auto end = static_cast<std::size_t>(last.base() - name.begin());
  NumberedName split{name.substr(0, begin), name.substr(end), end - begin, 0};
  const auto [stop, error] = std::from_chars(name.data() + begin, name.data() + end, split.number);
  if (error != std::errc() || stop != name.data() + end) return std::nullopt;
  return split;
}

std::string Joined(const NumberedName& name, std::uint64_t number) {
  std::string digits = std::to_string(number);
  if (digits.size() < name.width) digits.insert(0, name.width - digits.size(), '0');
  return name.before + digits + name.after;
}

Runs NumberedFiles(const std::string& folder, std::string_view extension) {
  Runs runs;
  for (const std::string& file : CardFolder::Of(folder)->VisibleFiles(extension)) {
    if (auto name = SplitNumber(file)) {
      runs[{name->before, FoldCase(name->after)}].push_back(std::move(*name));
    }
  }
  for (auto& [pattern, names] : runs) {
    std::sort(names.begin(), names.end(),
              [](const NumberedName& a, const NumberedName& b) { return a.number < b.number; });
  }
  return runs;
}

}  // namespace Sorvik::sequences
