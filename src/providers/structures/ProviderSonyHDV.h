// SPDX-License-Identifier: MIT
// The tree of Sony HDV recorders: all clips in VIDEO/HVR, under names that spell out a number, date
// and time. One entry a media file; files of one recording carry the same number and are told apart
// by a suffix on the entry's name.
#pragma once

#include <string>

#include "SorvikProvider/frame/Provider.h"

namespace Sorvik {

class ProviderSonyHDV final : public Provider {
 public:
  // Both give ExtraPath whether it was asked for or not; it names TRACKS.DAT even if it isn't
  // there. The one-entry call also answers for files that aren't there, but not for a key that is no
  // name of a file.
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
  int GetMaximumThumbnailHeight(int height) const override;
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  bool ShouldCheckFilter() const override;
  bool IsFileBased() const override;
};

}  // namespace Sorvik
