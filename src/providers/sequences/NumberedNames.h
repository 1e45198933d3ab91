// SPDX-License-Identifier: MIT
// Files that a camera numbers: segments of a recording, frames of a sequence.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Sorvik::sequences {

// A file name split at its last run of digits: "A001." 0000123 ".ari".
struct NumberedName {
  std::string before;
  std::string after;
  std::size_t width;  // number of digits
  std::uint64_t number;
};

// Returns nullopt for a name without digits in its title.
std::optional<NumberedName> SplitNumber(const std::string& name);
// The name with another number.
std::string Joined(const NumberedName& name, std::uint64_t number);

// The visible numbered files of a folder with the same extension, ignoring case as recognition of
// frames does. Grouped by the rest of their names and sorted by number.
using Runs = std::map<std::pair<std::string, std::string>, std::vector<NumberedName>>;
Runs NumberedFiles(const std::string& folder, std::string_view extension);

}  // namespace Sorvik::sequences
