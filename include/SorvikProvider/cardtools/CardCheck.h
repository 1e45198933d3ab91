// SPDX-License-Identifier: MIT
// Checks whether a card is complete. Listings skip missing parts without notice; a host that copies
// a card before it is erased needs to know them.
#pragma once

#include <string>
#include <vector>

#include "SorvikProvider/foundation/Export.h"

namespace Sorvik {

// One finding: a missing or orphaned part.
struct StructurePart {
  std::string entryKey;  // key of its entry in a listing; empty for the card
  std::string kind;      // its role in words: "span", "sound channel", "proxy", "index"
  std::string path;      // where it is or should be; the clip's id if that is unknown
};

struct StructureFindings {
  // Missing parts that the card's indexes name or its layout requires.
  std::vector<StructurePart> missing;
  // Media files of the card that belong to no entry.
  std::vector<StructurePart> unreached;
  // Files that belong to the card and not to a clip, as full paths. They are optional: one that
  // doesn't exist isn't missing, even if it is among the extra paths of clips.
  std::vector<std::string> structureFiles;
};

// Checks the card at `path` with the provider `identification`. Returns no findings for a provider
// without checks, and for a path that it doesn't recognize. Reads the indexes and clip records of
// the card; those that can't be read are ignored. Any thread, between ProviderHost::Initialize and
// the last Shutdown.
SORVIK_EXPORT StructureFindings CheckStructure(const std::string& path,
                                               const std::string& identification);

}  // namespace Sorvik
