// SPDX-License-Identifier: MIT
// A Canon XF card: below CONTENTS/CLIPS001 a folder for each clip, with one MXF file for each span
// of the recording and sidecars beside them. One entry a clip, under its first span.
#pragma once

#include <string>

#include "SorvikProvider/frame/Provider.h"

namespace Sorvik {

class ProviderCanonXF final : public Provider {
 public:
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  // Can't be aborted.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  FieldNameSet GetFieldList() const override;
  FieldNameList GetDefaultFieldList() const override;
  FieldLabelMap GetFieldLabelList() const override;
  int CanProvideFor(const std::string& path) const override;
  std::string GetIdentification() const override;
  std::string GetUIString() const override;
  int GetMaximumThumbnailHeight(int height) const override;
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  bool ShouldCheckFilter() const override;
  bool IsFileBased() const override;
};

}  // namespace Sorvik
