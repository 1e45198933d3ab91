// SPDX-License-Identifier: MIT
// The fallback of the browser: any real directory, with the file system's own facts.
#pragma once

#include <string>

#include "SorvikProvider/frame/Provider.h"

namespace Sorvik {

// Claims every directory with the lowest score in use. Follows shortcuts, and gives the system's
// icons as thumbnails. Keeps nothing; any thread.
class WinProviderDirectory final : public Provider {
 public:
  // Fills ExtraPath of an MXF file with its side file.
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
  // A square of the smaller of `width` and what GetMaximumThumbnailHeight says of `height`.
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  bool ShouldCheckFilter() const override { return true; }
  bool IsFileBased() const override { return true; }
};

// The XMP side file of an MXF file, "clip.mxf.xmp" beside "clip.mxf"; empty if there is none or
// `path` has another extension, for which the disk isn't touched.
std::string GetMXFSidecarPath(const std::string& path);

}  // namespace Sorvik
