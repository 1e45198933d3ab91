// SPDX-License-Identifier: MIT
// The lines of a catalogue about the cards of one folder.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/cardtools/Catalogue.h"
#include "cardtools/CardSearch.h"

namespace Sorvik {

// The cards of an earlier catalogue, by path. Immutable.
class KnownCards {
 public:
  // Without those of another version of the program, and of providers that aren't registered.
  KnownCards(std::shared_ptr<const CatalogueIndex> index, const std::string& tool);

  std::vector<FoundCard> At(const std::string& path) const;
  const CatalogueIndex::Card* Find(const FoundCard& card) const;
  const CatalogueIndex& Index() const noexcept { return *index_; }

 private:
  std::shared_ptr<const CatalogueIndex> index_;
  std::map<std::string, std::vector<const CatalogueIndex::Card*>, std::less<>> byPath_;
};

struct FolderLines {
  std::string lines;
  CatalogueResult result;
};

// Reads the cards of a folder, or copies their lines from `known` (may be nullptr) if they are
// unchanged. Returns incomplete lines if `request` is aborted.
FolderLines CatalogueFolder(const FoundFolder& folder, const CatalogueOptions& options,
                            const KnownCards* known, ProviderRequest& request);

// A line "problem" about a path that couldn't be read. `kind` is "missing", "unreadable" or
// "timeout".
std::string ProblemLine(const std::string& path, std::string_view kind, std::string_view detail);

// The line "end".
std::string EndLine(const CatalogueResult& result);

// "card", "clip", "file", "problem" or "end"; empty if it isn't a line of a catalogue.
std::string_view LineType(std::string_view line);

// Calls `receive` with each line, its end included.
template <class Receive>
void ForEachLine(std::string_view lines, Receive receive) {
  while (!lines.empty()) {
    const auto end = std::min(lines.find('\n'), lines.size() - 1) + 1;
    receive(lines.substr(0, end));
    lines.remove_prefix(end);
  }
}

}  // namespace Sorvik
