// SPDX-License-Identifier: MIT
// Cards of Panasonic camcorders that record MOV and MP4 to PRIVATE/PANA_GRP. One entry for each
// clip, keyed by its folder and file name.
#pragma once

#include <string>

#include "frame/CardChecker.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderPanaGroup final : public ClipProvider, public CardChecker {
 public:
  ProviderPanaGroup();
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  // Main and simultaneous recordings are separate entries. Frame size and rate come from the name
  // of the folder if the clip doesn't have them. Empty if aborted.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  // With reservation if the root or a folder contains unrelated files.
  int CanProvideFor(const std::string& path) const override;
  // The camera's picture of the clip, otherwise the desktop's icon for the essence file.
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const override;
};

}  // namespace Sorvik
