// SPDX-License-Identifier: MIT
#include "formats/MediaNames.h"

#include <algorithm>

#include "foundation/Paths.h"

namespace Sorvik::formats {

bool HasMediaExtension(std::string_view path) {
  static constexpr std::string_view kExtensions[] = {".mxf", ".mp4",  ".mov",  ".mts", ".m2ts",
                                                     ".m2t", ".avi",  ".dv",   ".wav", ".r3d",
                                                     ".crm", ".braw", ".braw2"};
  return std::ranges::any_of(kExtensions, [path](std::string_view extension) {
    return foundation::HasExtension(path, extension);
  });
}

}  // namespace Sorvik::formats
