// SPDX-License-Identifier: MIT
// Sony XDCAM media in their two layouts: discs, with the clips in a folder Clip at the top, and
// PROAV, with everything below that folder. One entry for each clip XML, keyed by its path.
#pragma once

#include <string>

#include "frame/CardChecker.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderXDCAM final : public ClipProvider, public CardChecker {
 public:
  ProviderXDCAM();
  // Never tells the proxy's path. Gives the entry even if nothing is known of it.
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  // A clip XML without essence shows with its metadata and no path. Empty once aborted.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  // 40 where something lies at the top of the structure that isn't looked for there.
  int CanProvideFor(const std::string& path) const override;
  // The system's icon of the essence file.
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  StructureFindings CheckStructure(const std::string& path) const override;
};

}  // namespace Sorvik
