// SPDX-License-Identifier: MIT
// The fallback provider: plain directories, with the attributes of the file system.
#pragma once

#include <string>

#include "SorvikProvider/frame/Provider.h"

namespace Sorvik {

// Claims every directory, with the lowest score of all providers. Resolves shortcuts, and returns
// the icons of the desktop theme as thumbnails. Stateless; any thread.
class WinProviderDirectory final : public Provider {
 public:
  // Fills ExtraPath of an MXF file with its sidecar.
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
  // Returns a square whose side is the smaller of `width` and GetMaximumThumbnailHeight(height).
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  bool ShouldCheckFilter() const override { return true; }
  bool IsFileBased() const override { return true; }
};

// Returns the XMP sidecar of an MXF file, "clip.mxf.xmp" next to "clip.mxf". Returns an empty
// string if it is missing, or if `path` has another extension; the disk then isn't accessed.
std::string GetMXFSidecarPath(const std::string& path);

}  // namespace Sorvik
