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

// The material of an essence in `root`/MEDIAPRO.XML, with the list that owns it: the first one
// whose uri ends with the file name, else the first whose uri contains it; null if there is none.
std::shared_ptr<const formats::sony::Material> FindMaterial(const std::string& root,
                                                            std::string_view essenceFile);

// Several times the number of files of a real clip: eight sound channels and a few more.
// In an invalid index one row can match every clip of a medium, so the length of a row must not be
// multiplied by the number of clips.
inline constexpr std::size_t kMaxFilesOfClip = 64;

struct IndexedFile {
  enum class Kind { kPlaylist, kSubStream, kRealTimeMeta, kMeta, kSound };

  Kind kind;
  std::string name;
};

struct IndexedClip {
  std::string clipId;
  // The files of the clip except its picture, in the order in which they are reported: playlist,
  // low-resolution copy, real-time metadata, metadata, sound.
  std::vector<IndexedFile> files;
  std::vector<std::string> pictures;  // names of the picture files; almost always one
};

// All clips of the table in INDEX.XML at `path`, in document order; null if it can't be read.
std::shared_ptr<const std::vector<IndexedClip>> IndexedClips(const std::string& path);

// The clip of a clip XML in the table of INDEX.XML at `path`, with the table that owns it: the
// first one whose id is the name of the XML's folder, else the first whose id is contained in
// `key`; null if there is none.
std::shared_ptr<const IndexedClip> FindIndexedClip(const std::string& path, std::string_view key);

}  // namespace Sorvik::xdcam
