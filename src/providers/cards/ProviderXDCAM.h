// SPDX-License-Identifier: MIT
// Sony XDCAM media in their two layouts: discs, with a folder Clip in the root, and PROAV, with
// everything in that folder. One entry for each clip XML, keyed by its path.
#pragma once

#include <string>
#include <vector>

#include "frame/CardChecker.h"
#include "frame/PartLister.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderXDCAM final : public ClipProvider, public CardChecker, public PartLister {
 public:
  ProviderXDCAM();
  // Never contains the proxy's path. Returns an entry even without any field.
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  // The entry of a clip XML without essence has its metadata but no path. Empty if aborted.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  // With reservation if the top folder of the structure contains unrelated files or folders.
  int CanProvideFor(const std::string& path) const override;
  // The desktop's icon for the essence file.
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const override;
  std::vector<ListedPart> ListParts(const std::string& path, const std::string& key) const override;
};

}  // namespace Sorvik
