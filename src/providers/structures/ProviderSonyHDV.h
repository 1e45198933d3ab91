// SPDX-License-Identifier: MIT
// The tree of Sony HDV recorders: all clips in VIDEO/HVR, under names that spell out a number, date
// and time. One entry a media file; files of one recording carry the same number and are told apart
// by a suffix on the entry's name.
#pragma once

#include <string>

#include "frame/CardChecker.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderSonyHDV final : public ClipProvider, public CardChecker {
 public:
  ProviderSonyHDV();
  // Both give ExtraPath whether it was asked for or not; it names TRACKS.DAT even if it isn't
  // there. The one-entry call also answers for files that aren't there, but not for a key that is
  // no name of a file.
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  int CanProvideFor(const std::string& path) const override;
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  StructureFindings CheckStructure(const std::string& path) const override;
};

}  // namespace Sorvik
