// SPDX-License-Identifier: MIT
// The tree of AVCHD and BDMV cameras: numbered stream files in BDMV/STREAM, and playlists in
// BDMV/PLAYLIST that tell which of them are a recording. BDMV may lie in a folder AVCHD that stands
// alone. One entry a shot, under the name of its first stream file.
#pragma once

#include <string>

#include "frame/CardChecker.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderAVCHD final : public ClipProvider, public CardChecker {
 public:
  ProviderAVCHD();
  // Also for a clip that no playlist starts with, and for one that none names. Nothing for a key
  // that is no name of a file.
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  // The clips that start a shot in some playlist. Empty once aborted.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  // 40 where STREAM holds anything else than numbered stream files.
  int CanProvideFor(const std::string& path) const override;
  // A fixed picture, whatever the path and key.
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  StructureFindings CheckStructure(const std::string& path) const override;
};

}  // namespace Sorvik
