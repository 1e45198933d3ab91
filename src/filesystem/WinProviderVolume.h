// SPDX-License-Identifier: MIT
// The root of the browse tree: what the machine can reach at the top.
#pragma once

#include <string>
#include <vector>

#include "SorvikProvider/frame/Provider.h"
#include "foundation/platform/Volumes.h"

namespace Sorvik {

// Answers for kVolumeListPath alone. The listing can't be aborted; nothing on a network mount is
// touched for it. Keeps nothing; any thread.
class WinProviderVolume final : public Provider {
 public:
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  FieldNameSet GetFieldList() const override;
  FieldNameList GetDefaultFieldList() const override;
  FieldLabelMap GetFieldLabelList() const override;
  int CanProvideFor(const std::string& path) const override;
  std::string GetIdentification() const override;
  std::string GetUIString() const override;
  int GetMaximumThumbnailHeight(int height) const override { return height; }
  Bitplate** GetThumbnail(const std::string&, const std::string&, int, int,
                          ProviderRequest*) const override {
    return nullptr;
  }
  bool ShouldCheckFilter() const override { return false; }
  bool IsFileBased() const override { return false; }
};

// The entries of these volumes, local ones first: a network volume at the place of a local one
// takes its entry over.
ContentMap ContentOfVolumes(const std::vector<platform::Volume>& volumes,
                            const FieldNameSet& fields);

}  // namespace Sorvik
