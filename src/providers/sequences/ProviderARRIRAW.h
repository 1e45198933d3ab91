// SPDX-License-Identifier: MIT
// A folder of ARRIRAW frames (.ARI) as one clip.
#pragma once

#include <string>

#include "frame/CardChecker.h"
#include "providers/sequences/ProviderFileSequenceBase.h"

namespace Sorvik {

class ProviderARRIRAW final : public ProviderFileSequenceBase, public CardChecker {
 public:
  ProviderARRIRAW();
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  bool IsSequenceFile(const UTF16String& name) const override;
  // The frames, then the head's sidecar "<name>.ARI.xmp".
  void AddExtraPaths(FieldValueMap& fields, const std::string& filePath) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const override;
};

}  // namespace Sorvik
