// SPDX-License-Identifier: MIT
// Folders of sound recorders: WAV files with iXML, or with the date and device of a 'bext' chunk.
// One entry for each take with all its files (SoundTakes.h), keyed by the name of the first file.
#pragma once

#include "providers/modern/ProviderMediaFilesBase.h"

namespace Sorvik {

class ProviderSoundRoll final : public ProviderMediaFilesBase {
 public:
  ProviderSoundRoll();

 private:
  void ReadFiles(const std::string& root, ProviderRequest* request) const override;
  std::shared_ptr<const MediaList> ListOf(const std::string& root) const override;
  // Opens at most two files, and none in a folder without WAV. With reservation if the folder
  // contains other media. Sound next to frames or R3D belongs to these.
  Recognition Recognize(const std::string& root) const override;
  // A track for each file that starts with the others.
  std::vector<ListedPart> PartsOf(const MediaList& list, const MediaEntry& entry) const override;
  void DescribeMore(const std::string& root, const MediaList& list,
                    CardDescription& card) const override;
};

}  // namespace Sorvik
