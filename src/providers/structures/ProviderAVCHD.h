// SPDX-License-Identifier: MIT
// AVCHD and BDMV cards: numbered stream files in BDMV/STREAM, and playlists in BDMV/PLAYLIST that
// join them to shots. BDMV may be inside a folder AVCHD that is the only visible item of the card.
// One entry for each shot; its key is the name of its first stream file.
#pragma once

#include <string>
#include <vector>

#include "frame/CardChecker.h"
#include "frame/PartLister.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderAVCHD final : public ClipProvider, public CardChecker, public PartLister {
 public:
  ProviderAVCHD();
  // Accepts any file of STREAM as key, whether a playlist contains it or not. Empty for a key that
  // isn't a file name.
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  // The clips that start a shot in some playlist. Empty if aborted.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  // 40 if STREAM contains anything but numbered stream files.
  int CanProvideFor(const std::string& path) const override;
  // A fixed picture for any path and key.
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const override;
  std::vector<ListedPart> ListParts(const std::string& path, const std::string& key) const override;
};

}  // namespace Sorvik
