// SPDX-License-Identifier: MIT
// Locations of the XMP sidecars of a media file.
#pragma once

#include <string>
#include <vector>

namespace Sorvik::xmp {

// Returns the candidate sidecar paths of the file at `path` (UTF-8), strongest first. Each item
// lists alternative spellings of one location; the first that exists is used. Accesses the disk
// only for Canon XF clips, whose sidecar names are case-insensitive.
std::vector<std::vector<std::string>> SidecarCandidates(const std::string& path);

}  // namespace Sorvik::xmp
