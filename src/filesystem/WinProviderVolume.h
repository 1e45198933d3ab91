// SPDX-License-Identifier: MIT
// The root of the browse tree: the volumes of the machine.
#pragma once

#include <string>
#include <vector>

#include "SorvikProvider/frame/Provider.h"
#include "foundation/platform/Volumes.h"

namespace Sorvik {

// Claims only kVolumeListPath. The listing can't be aborted and accesses no network mount.
// Stateless; any thread.
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

// Returns an entry for each volume, keyed by mount point. Local volumes come first in `volumes`: a
// network volume on the same mount point replaces the local one.
ContentMap ContentOfVolumes(const std::vector<platform::Volume>& volumes,
                            const FieldNameSet& fields);

}  // namespace Sorvik
