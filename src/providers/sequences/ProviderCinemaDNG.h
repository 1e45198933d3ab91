// SPDX-License-Identifier: MIT
// A folder of CinemaDNG frames (.DNG) as one clip.
#pragma once

#include <string>
#include <vector>

#include "frame/CardChecker.h"
#include "frame/PartLister.h"
#include "providers/sequences/ProviderFileSequenceBase.h"

namespace Sorvik {

class ProviderCinemaDNG final : public ProviderFileSequenceBase,
                                public CardChecker,
                                public PartLister {
 public:
  ProviderCinemaDNG();
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  bool IsSequenceFile(const UTF16String& name) const override;
  // The frames, then the sound of the clip: the head's title up to its last "_", with ".WAV".
  void AddExtraPaths(FieldValueMap& fields, const std::string& filePath) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const override;
  std::vector<ListedPart> ListParts(const std::string& path, const std::string& key) const override;
};

}  // namespace Sorvik
