// SPDX-License-Identifier: MIT
// Sony XDCAM EX cards, where everything lies below a folder BPAV. One entry for each clip XML whose
// essence is there, keyed by its path; the clips of a take are one entry, also when the take runs
// over several cards.
#pragma once

#include <string>

#include "frame/CardChecker.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderXDCAMEX final : public ClipProvider, public CardChecker {
 public:
  ProviderXDCAMEX();
  // Any clip of the card, also one that the listing folds into its take.
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  // The name is the shot's, unless that is asked for as a field of its own. Empty once aborted.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  // 40 for a card without the folder of takes.
  int CanProvideFor(const std::string& path) const override;
  // The system's icon of the essence file.
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  StructureFindings CheckStructure(const std::string& path) const override;
};

}  // namespace Sorvik
