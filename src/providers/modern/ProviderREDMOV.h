// SPDX-License-Identifier: MIT
// RED clip folders (*.RDC) with MOV segments and no R3D, as cameras record them in ProRes only. R3D
// clips in the same folder are listed by ProviderRED. One entry for each clip, keyed by the path of
// its first segment.
#pragma once

#include "providers/modern/ProviderMediaFilesBase.h"

namespace Sorvik {

class ProviderREDMOV final : public ProviderMediaFilesBase {
 public:
  ProviderREDMOV();
  // The same picture for every clip.
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;

 private:
  void ReadFiles(const std::string& root, ProviderRequest* request) const override;
  std::shared_ptr<const MediaList> ListOf(const std::string& root) const override;
  std::vector<ListedPart> PartsOf(const MediaList& list, const MediaEntry& entry) const override;
  // With reservation if the folder contains media next to the clip folders.
  Recognition Recognize(const std::string& root) const override;
  void DescribeMore(const std::string& root, const MediaList& list,
                    CardDescription& card) const override;
};

}  // namespace Sorvik
