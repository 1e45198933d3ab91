// SPDX-License-Identifier: MIT
// Sony XDCAM EX cards, which have everything in a folder BPAV. One entry for each clip XML whose
// essence exists, keyed by its path; the clips of a take are one entry, even if the take spans
// several cards.
#pragma once

#include <string>
#include <vector>

#include "frame/CardChecker.h"
#include "frame/PartLister.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderXDCAMEX final : public ClipProvider, public CardChecker, public PartLister {
 public:
  ProviderXDCAMEX();
  // Any clip of the card, including one that the listing merges into its take.
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  // The name is the shot's, unless "shotName" is one of the fields. Empty if aborted.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  // With reservation if the card has no folder for takes.
  int CanProvideFor(const std::string& path) const override;
  // The desktop's icon for the essence file.
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const override;
  std::vector<ListedPart> ListParts(const std::string& path, const std::string& key) const override;
};

}  // namespace Sorvik
