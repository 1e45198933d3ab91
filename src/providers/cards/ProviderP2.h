// SPDX-License-Identifier: MIT
// Panasonic P2 cards: one entry for each shot, keyed by the id of the clip that represents it. A
// shot of several clips, on this card or on cards next to it, is one entry. Thumbnails are the
// card's own icons.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "frame/CardChecker.h"
#include "frame/FileGrouper.h"
#include "frame/PartLister.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderP2 final : public ClipProvider,
                         public CardChecker,
                         public PartLister,
                         public FileGrouper {
 public:
  ProviderP2();
  // Also finds a clip on a card next to this one. The duration is that of the clip alone.
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  // Can't be aborted. Entries always contain the identifier, relation, shot name and frame count.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  // With reservation if the card contains unrelated files or folders.
  int CanProvideFor(const std::string& path) const override;
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const override;
  std::vector<ListedPart> ListParts(const std::string& path, const std::string& key) const override;
  // The files of a clip: those with its id, sound files with two more digits.
  std::optional<FileGroup> GroupOf(const std::string& folder,
                                   const std::string& name) const override;
};

}  // namespace Sorvik
