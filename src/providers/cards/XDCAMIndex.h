// SPDX-License-Identifier: MIT
// What the indexes of an XDCAM medium tell of its clips: the material list of the disc layout and
// the clip table of the PROAV layout, each parsed once within a call scope. Any thread; a record
// belongs to the thread that asked for it.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"
#include "formats/TextIndex.h"
#include "formats/sony/MediaProfile.h"

namespace Sorvik::xdcam {

using Hestra::UTF16String;

// The first material of `root`/MEDIAPRO.XML in whose uri the file name occurs, with the list that
// owns it; null if there is none.
std::shared_ptr<const formats::sony::Material> FindMaterial(const UTF16String& root,
                                                            std::u16string_view essenceFile);

// Several times what a clip has of files besides its essence: eight channels of sound and a few
// more. A hostile index can match every clip of a medium with one row, so its length must not
// multiply.
inline constexpr std::size_t kMaxFilesOfClip = 64;

struct IndexedClip {
  UTF16String clipId;
  // Names of the files that belong to it besides its essence, in the order in which they are
  // reported: playlist, low-resolution copy, real-time metadata, metadata, sound.
  std::vector<UTF16String> files;
};

// All clips of the table in INDEX.XML at `path`, in document order; null if it can't be read.
std::shared_ptr<const std::vector<IndexedClip>> IndexedClips(const UTF16String& path);

// The first clip of the table in INDEX.XML at `path` whose id occurs in `key`, with the table that
// owns it; null if there is none.
std::shared_ptr<const IndexedClip> FindIndexedClip(const UTF16String& path,
                                                   std::u16string_view key);

}  // namespace Sorvik::xdcam
