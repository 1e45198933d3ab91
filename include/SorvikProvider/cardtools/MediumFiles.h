// SPDX-License-Identifier: MIT
// The files of a medium that are in none of its cards: what cameras write for the medium itself,
// such as a database of all pictures and clips, and what others have put there.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/foundation/Export.h"

namespace Sorvik {

enum class MediumFileScope {
  kStructure,  // only what cameras write; other folders aren't listed
  kAll,        // all files of the medium
};

// Returns the files below `path` that aren't below one of `cards`, by path: with the role
// kStructure those that cameras write for the medium, which a copy of it needs, else kForeign or
// kHidden. Empty if a card is at `path` itself: CheckCard names all files below it. Links to
// folders aren't followed. `isStopped`, if set, is called for each folder; once it returns true the
// result is incomplete. Blocks; any thread.
SORVIK_EXPORT std::vector<CardFile> ListMediumFiles(const std::string& path,
                                                    const std::vector<FoundCard>& cards,
                                                    MediumFileScope scope,
                                                    const std::function<bool()>& isStopped = {});

}  // namespace Sorvik
