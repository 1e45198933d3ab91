// SPDX-License-Identifier: MIT
// A card of Sony HDV recorders: all clips in VIDEO/HVR, named by number, date and time. One entry
// for each media file. Files of one recording have the same number; a suffix to the entry's name
// distinguishes them.
#pragma once

#include <string>
#include <vector>

#include "frame/CardChecker.h"
#include "frame/PartLister.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderSonyHDV final : public ClipProvider, public CardChecker, public PartLister {
 public:
  ProviderSonyHDV();
  // Both set ExtraPath even if it wasn't requested; it contains TRACKS.DAT even if that doesn't
  // exist. The operation for one entry also accepts missing files, but no key that isn't a file
  // name.
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  int CanProvideFor(const std::string& path) const override;
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const override;
  // All files of the recording that the key belongs to.
  std::vector<ListedPart> ListParts(const std::string& path, const std::string& key) const override;
};

}  // namespace Sorvik
