// SPDX-License-Identifier: MIT
#include "providers/modern/CompanionFiles.h"

#include "foundation/Paths.h"

namespace Sorvik {

void CompanionFiles::AddEntry(std::string_view fileName, std::size_t entry) {
  entries_.emplace(foundation::FoldCase(foundation::FileStem(fileName)), entry);
  entries_.emplace(foundation::FoldCase(fileName), entry);
}

std::optional<std::size_t> CompanionFiles::Find(std::string_view fileName) const {
  const auto found = entries_.find(foundation::FoldCase(foundation::FileStem(fileName)));
  if (found == entries_.end()) return std::nullopt;
  return found->second;
}

}  // namespace Sorvik
