// SPDX-License-Identifier: MIT
// Canon cards whose clips are files directly in CONTENTS/CLIPS###: Cinema RAW Light (CRM), XF-AVC S
// and XF-HEVC S (MP4), XF-AVC (MXF). One entry for each recording with all its parts, keyed by the
// file name of the first part. Clips in folders of their own, which can be on the same card, are
// listed by ProviderCanonXF.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "frame/CardChecker.h"
#include "frame/FileGrouper.h"
#include "frame/PartLister.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderCanonXFAVC final : public ClipProvider,
                                 public CardChecker,
                                 public PartLister,
                                 public FileGrouper {
 public:
  ProviderCanonXFAVC();
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  // Empty if aborted.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  // With reservation if the root contains unrelated files or folders, or a clip folder files of no
  // clip.
  int CanProvideFor(const std::string& path) const override;
  // The desktop's icon for the essence file.
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const override;
  std::vector<ListedPart> ListParts(const std::string& path, const std::string& key) const override;
  // Groups the parts of a recording, with proxies and sidecars.
  std::optional<FileGroup> GroupOf(const std::string& folder,
                                   const std::string& name) const override;
};

}  // namespace Sorvik
