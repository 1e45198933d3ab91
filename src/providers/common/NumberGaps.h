// SPDX-License-Identifier: MIT
// Gaps in the numbers of files that are numbered without gaps: frames and segments. Paths are
// UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frame/CardChecker.h"
#include "frame/PartLister.h"

namespace Sorvik {

// A file name split at its last run of digits: "A001." 0000123 ".ari".
struct NumberedName {
  std::string before;
  std::string after;
  std::size_t width;  // number of digits
  std::uint64_t number;
};

// Returns nullopt for a name without digits.
std::optional<NumberedName> SplitNumber(const std::string& name);
// The name with another number.
std::string Joined(const NumberedName& name, std::uint64_t number);

// What the gaps of a run mean.
struct GapMeaning {
  const char* role;
  Finding::Severity severity = Finding::Severity::kError;
  const char* detail = "";
};

// Reports the numbers from `from` up to `to` (excluded) as missing.
void ReportGap(const NumberedName& pattern, std::uint64_t from, std::uint64_t to,
               const std::string& folder, const std::vector<std::string>& keys,
               const GapMeaning& meaning, CardDescription& card);

// The visible numbered files of a folder with the same extension, ignoring case as recognition of
// frames does. Grouped by the rest of their names and sorted by number.
using Runs = std::map<std::pair<std::string, std::string>, std::vector<NumberedName>>;

Runs NumberedFiles(const std::string& folder, std::string_view extension);

// The run that the file at `path` belongs to; empty if its name has no number.
std::vector<NumberedName> RunOf(const std::string& path);

// The segments of the run that `path` belongs to. The first one has the number 1, so that a gap is
// known there, too.
std::vector<ListedPart> ListSegments(const std::string& path);

// Reports the missing segments of the clip in `folder`, whose numbers begin with 1.
void DescribeSegments(const std::string& folder, std::string_view extension,
                      const std::vector<std::string>& keys, CardDescription& card);

}  // namespace Sorvik
