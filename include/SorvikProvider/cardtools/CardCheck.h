// SPDX-License-Identifier: MIT
// Whether a structure is whole: what its own lists name and is not there. Listings leave such gaps
// out in silence; a host that copies a card before it is wiped wants to hear of them.
#pragma once

#include <string>
#include <vector>

#include "SorvikProvider/foundation/Export.h"

namespace Sorvik {

// A part of a structure that deserves a word.
struct StructurePart {
  std::string entryKey;  // the entry that it belongs to, as the listing keys it; empty for the card
  std::string kind;      // what it is, in plain words: "span", "sound channel", "proxy", "index"
  std::string path;      // where it is or should be; a clip's id where no place can be told
};

struct StructureFindings {
  // Parts that are named by the structure's own lists, or that its layout requires, and aren't
  // there.
  std::vector<StructurePart> missing;
  // Media files inside the structure that no entry can reach.
  std::vector<StructurePart> unreached;
  // Files that belong to the structure itself, by full path. One that isn't there is no loss, even
  // if clips name it.
  std::vector<std::string> structureFiles;
};

// Looks through the structure at `path` as the provider `identification` understands it. Empty
// findings for a provider that knows no structure, and for a path that it doesn't claim. Reads the
// indexes and clip records of the card; what can't be read counts as not naming anything. Any
// thread, between ProviderHost::Initialize and the last Shutdown.
SORVIK_EXPORT StructureFindings CheckStructure(const std::string& path,
                                               const std::string& identification);

}  // namespace Sorvik
