// SPDX-License-Identifier: MIT
// Cards of Sony cameras with XAVC: M4ROOT (clips in MP4) and XDROOT (clips in MXF). One entry for
// each recording, keyed by the file name of its essence.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "frame/CardChecker.h"
#include "frame/FileGrouper.h"
#include "frame/PartLister.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderSonyXAVC final : public ClipProvider,
                               public CardChecker,
                               public PartLister,
                               public FileGrouper {
 public:
  ProviderSonyXAVC();
  // The parts of a recording that the camera cut are one entry, keyed by the first part.
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  // A clip whose essence is missing but of which other files exist has an entry without a path.
  // Empty if aborted.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  // Recognized by content: users copy the folders without PRIVATE and M4ROOT around them. With
  // reservation without a material list, or if the root contains unrelated files or folders.
  int CanProvideFor(const std::string& path) const override;
  // The camera's picture of the clip, otherwise the desktop's icon for the essence file.
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const override;
  std::vector<ListedPart> ListParts(const std::string& path, const std::string& key) const override;
  // Groups a clip with files of its stem that end in a letter and two digits (C0001M01.XML).
  std::optional<FileGroup> GroupOf(const std::string& folder,
                                   const std::string& name) const override;
};

}  // namespace Sorvik
