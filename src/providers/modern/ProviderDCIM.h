// SPDX-License-Identifier: MIT
// Cards of cameras that record to DCIM: action cameras, drones, still cameras, phones. One entry
// for each recording or DCF object, keyed by its folder below DCIM and the stem of its first file
// ("100GOPRO/GX010001").
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "frame/CardChecker.h"
#include "frame/FileGrouper.h"
#include "frame/PartLister.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderDCIM final : public ClipProvider,
                           public CardChecker,
                           public PartLister,
                           public FileGrouper {
 public:
  ProviderDCIM();
  // Lists only the folder of the key.
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  // Opens no file for names and paths. An object of which only a proxy or a thumbnail is left has
  // an entry without a path. Empty if aborted.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  // With reservation if no folder below DCIM has the name of a camera's.
  int CanProvideFor(const std::string& path) const override;
  // The camera's picture of the recording, the picture itself, or the desktop's icon.
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const override;
  // The chapters of a recording. Other objects have one original.
  std::vector<ListedPart> ListParts(const std::string& path, const std::string& key) const override;
  // Groups files of any maker: those that match no form of stems are grouped by their stems.
  std::optional<FileGroup> GroupOf(const std::string& folder,
                                   const std::string& name) const override;
};

}  // namespace Sorvik
