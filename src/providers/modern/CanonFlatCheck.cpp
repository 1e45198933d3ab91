// SPDX-License-Identifier: MIT
#include <string>
#include <string_view>

#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "providers/modern/CanonFlatCard.h"
#include "providers/modern/ProviderCanonXFAVC.h"

namespace Sorvik {
namespace {

using canonflat::Card;
using canonflat::Recording;
using foundation::FileStem;

// "-007" for the part before "-008".
std::string NumberText(unsigned number, char separator) {
  std::string digits = std::to_string(number);
  return separator + std::string(digits.size() < 3 ? 3 - digits.size() : 0, '0') + digits;
}

// Parts between the first and the last one prove that they existed. Parts before the first don't: a
// recording can begin on another card.
void AddMissingParts(const Recording& recording, StructureFindings& findings) {
  unsigned previous = 0;
  for (const std::string& path : recording.parts) {
    const canonflat::ClipName name = canonflat::ParseClipName(FileStem(path));
    if (!name.part) continue;
    const std::string folder(foundation::ParentFolder(path));
    const char separator = name.base.data()[name.base.size()];
    for (unsigned part = previous + 1; previous != 0 && part < *name.part; ++part) {
      const std::string missing = std::string(name.base) + NumberText(part, separator) +
                                  std::string(foundation::FileExtension(path));
      findings.missing.push_back({recording.key, "segment", foundation::JoinPath(folder, missing)});
    }
    previous = *name.part;
  }
}

}  // namespace

StructureFindings ProviderCanonXFAVC::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  StructureFindings findings;
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  for (const Recording& recording : card->Recordings()) AddMissingParts(recording, findings);
  for (const std::string& file : card->SharedFiles()) findings.structureFiles.push_back(file);
  return findings;
}

}  // namespace Sorvik
