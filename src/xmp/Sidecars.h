// SPDX-License-Identifier: MIT
// Where the XMP that belongs to a media file stands beside it.
#pragma once

#include <string>
#include <vector>

namespace Sorvik::xmp {

// The paths at which sidecars of the file at `path` (UTF-8) may stand, strongest first. Each item
// is a list of spellings of one place, of which the first that exists counts. Looks at the disk
// only for Canon XF clips, whose sidecar may be spelt in any case.
std::vector<std::vector<std::string>> SidecarPlaces(const std::string& path);

}  // namespace Sorvik::xmp
