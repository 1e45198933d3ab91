// SPDX-License-Identifier: MIT
// The takes of a folder of a sound recorder, and why its files belong together.
//
// - Files with the same iXML FAMILY_UID are one take.
// - Files without one are a take if their stems differ only in the track ("_Tr1", "_LR") and they
//   don't start at different times, or only in one digit ("_1") and start at the same sample.
// - A recorder cuts long takes at 2 or 4 GB. A take is continued by the one that has the same
// tracks,
//   scene and roll, and whose first sample is the one after its last.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "formats/sound/RecorderFile.h"

namespace Sorvik::soundroll {

struct TakeFile {
  std::string name;
  std::shared_ptr<const formats::sound::RecorderFile> facts;  // null if they can't be read
};

// Files that start together.
struct TakePart {
  std::vector<TakeFile> files;  // by name
  bool isInferred = false;      // continues the part in front of it by its time only
};

struct Take {
  std::vector<TakePart> parts;  // by time
  unsigned totalFiles = 0;      // by the files' metadata; 0 unknown

  const TakeFile& First() const { return parts.front().files.front(); }
  std::size_t FileCount() const;
};

// The stem without "_Tr1", "_LR" or "_1"; `isTrack` is set for the first two.
std::string_view WithoutTrack(std::string_view stem, bool& isTrack);

// By the name of the first file.
std::vector<Take> GroupTakes(std::vector<TakeFile> files);

}  // namespace Sorvik::soundroll
