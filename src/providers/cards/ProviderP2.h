// SPDX-License-Identifier: MIT
// Panasonic P2 cards: one entry for each shot, keyed by the id of the clip that is shown for it. A
// shot that runs over several clips, on this card or on cards beside it, is one entry. Pictures are
// the card's own icons.
#pragma once

#include <string>

#include "frame/CardChecker.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderP2 final : public ClipProvider, public CardChecker {
 public:
  ProviderP2();
  // Also for a clip that lies on a card beside this one. The duration is that of the clip alone.
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  // Can't be aborted. The identifier, relation, shot name and count of frames are always there.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  // 40 where something lies on the card that belongs elsewhere.
  int CanProvideFor(const std::string& path) const override;
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  StructureFindings CheckStructure(const std::string& path) const override;
};

}  // namespace Sorvik
