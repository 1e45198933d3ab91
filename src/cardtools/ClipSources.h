// SPDX-License-Identifier: MIT
// Where a picture of a clip can come from.
#pragma once

#include <string>
#include <vector>

#include "SorvikProvider/frame/ProviderWrapper.h"

namespace Sorvik {

struct ClipSource {
  enum class Kind {
    kPicture,   // an image file
    kEmbedded,  // a picture inside a media file
    kVideo,     // a frame decoded by the helper program
    kRaw,       // a raw picture developed by the helper program
    kHeif,      // a HEIC or AVIF picture decoded by the helper program
  };
  Kind kind;
  std::string path;
};
using ClipSources = std::vector<ClipSource>;

// Returns the sources of the entry, best first, from the names of its files: the picture that the
// camera stored next to the clip, then previews inside its media files, then these files
// themselves, proxies last. Opens none of them. Empty if there is no such entry.
ClipSources FindClipSources(const ProviderWrapper& provider, const std::string& path,
                            const std::string& key);

}  // namespace Sorvik
