// SPDX-License-Identifier: MIT
#include "providers/common/NumberGaps.h"

#include <algorithm>
#include <charconv>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"

namespace Sorvik {
namespace {

using foundation::CardFolder;
using foundation::FoldCase;
using foundation::JoinPath;

// Of a longer gap, only the first and the last number are reported.
constexpr std::uint64_t kMaxReportedGap = 100;

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

void ReportGap(const NumberedName& pattern, std::uint64_t from, std::uint64_t to,
               const std::string& folder, const std::vector<std::string>& keys,
               const GapMeaning& meaning, CardDescription& card) {
  const auto report = [&](std::uint64_t number, std::string detail) {
    card.Report({Finding::Kind::kMissing, meaning.severity, meaning.role,
                 JoinPath(folder, Joined(pattern, number)), keys, std::move(detail)});
  };
  if (to - from > kMaxReportedGap) {
    return report(from, std::to_string(to - from) + " numbers up to " + Joined(pattern, to - 1));
  }
  for (std::uint64_t number = from; number < to; ++number) report(number, meaning.detail);
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

std::vector<NumberedName> RunOf(const std::string& path) {
  const auto own = SplitNumber(std::string(foundation::FileName(path)));
  if (!own) return {};
  auto runs =
      NumberedFiles(std::string(foundation::ParentFolder(path)), foundation::FileExtension(path));
  const auto run = runs.find({own->before, FoldCase(own->after)});
  return run == runs.end() ? std::vector<NumberedName>() : std::move(run->second);
}

std::vector<ListedPart> ListSegments(const std::string& path) {
  constexpr std::uint64_t kMaxSegments = 1000;
  const std::string_view folder = foundation::ParentFolder(path);
  std::vector<ListedPart> parts;
  std::uint64_t next = 1;
  for (const NumberedName& segment : RunOf(path)) {
    for (; next < segment.number && segment.number < kMaxSegments; ++next) {
      parts.push_back(
          {.path = foundation::JoinPath(folder, Joined(segment, next)), .isPresent = false});
    }
    next = segment.number + 1;
    parts.push_back({.path = foundation::JoinPath(folder, Joined(segment, segment.number))});
  }
  return parts;
}

void DescribeSegments(const std::string& folder, std::string_view extension,
                      const std::vector<std::string>& keys, CardDescription& card) {
  for (const auto& [pattern, names] : NumberedFiles(folder, extension)) {
    // "A001_C001_003 copy.R3D" doesn't belong to a run that starts at 1.
    if (pattern.second.front() != '.') continue;
    std::uint64_t last = 0;
    for (const NumberedName& name : names) {
      if (name.number - last > 1) {
        ReportGap(name, last + 1, name.number, folder, keys, {card_role::kSegment}, card);
      }
      last = name.number;
    }
  }
}

}  // namespace Sorvik
