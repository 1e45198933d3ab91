// SPDX-License-Identifier: MIT
// Finds the files that belong to clips by their names. Names are compared ignoring case.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace Sorvik {

class CompanionFiles {
 public:
  // Adds a file of the entry with that index. Of several entries with one stem the first counts.
  void AddEntry(std::string_view fileName, std::size_t entry);

  // The entry of a file that has the stem of a clip ("A001.sidecar") or the name of a clip's file
  // in front of its extension ("A001.braw.xmp"); nullopt if there is none.
  std::optional<std::size_t> Find(std::string_view fileName) const;

 private:
  std::unordered_map<std::string, std::size_t> entries_;  // by folded stem and folded file name
};

}  // namespace Sorvik
