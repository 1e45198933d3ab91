// SPDX-License-Identifier: MIT
// A folder of Canon RAW frames (.RMF) as one clip.
#pragma once

#include <string>
#include <vector>

#include "frame/CardChecker.h"
#include "frame/PartLister.h"
#include "providers/sequences/ProviderFileSequenceBase.h"

namespace Sorvik {

class ProviderCanonRAW final : public ProviderFileSequenceBase,
                               public CardChecker,
                               public PartLister {
 public:
  ProviderCanonRAW();
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  bool IsSequenceFile(const UTF16String& name) const override;
  // The frames, then the sound, sidecar and clip information that exist.
  void AddExtraPaths(FieldValueMap& fields, const std::string& filePath) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const override;
  std::vector<ListedPart> ListParts(const std::string& path, const std::string& key) const override;
};

}  // namespace Sorvik
