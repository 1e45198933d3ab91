// SPDX-License-Identifier: MIT
// The clips in the indexes of an XDCAM medium: the material list of the disc layout and the clip
// table of the PROAV layout, each parsed once within a call scope. Any thread; a record belongs to
// the thread that requested it.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "formats/TextIndex.h"
#include "formats/sony/MediaProfile.h"

namespace Sorvik::xdcam {

// The first material of `root`/MEDIAPRO.XML whose uri contains the file name, with the list that
// owns it; null if there is none.
std::shared_ptr<const formats::sony::Material> FindMaterial(const std::string& root,
                                                            std::string_view essenceFile);

// Several times the number of files of a real clip: eight sound channels and a few more.
// In an invalid index one row can match every clip of a medium, so the length of a row must not be
// multiplied by the number of clips.
inline constexpr std::size_t kMaxFilesOfClip = 64;

struct IndexedClip {
  std::string clipId;
  // Names of the files of the clip except its essence, in the order in which they are reported:
  // playlist, low-resolution copy, real-time metadata, metadata, sound.
  std::vector<std::string> files;
};

// All clips of the table in INDEX.XML at `path`, in document order; null if it can't be read.
std::shared_ptr<const std::vector<IndexedClip>> IndexedClips(const std::string& path);

// The first clip of the table in INDEX.XML at `path` whose id is contained in `key`, with the table
// that owns it; null if there is none.
std::shared_ptr<const IndexedClip> FindIndexedClip(const std::string& path, std::string_view key);

}  // namespace Sorvik::xdcam
