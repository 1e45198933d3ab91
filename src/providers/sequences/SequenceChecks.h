// SPDX-License-Identifier: MIT
// What is missing from folders of frames and of RED segments, told by the gaps in their numbering.
#pragma once

#include <string>

#include "SorvikProvider/frame/StructureCheck.h"

namespace Sorvik {

// Frames of one clip carry one number, the last run of digits of their titles, and follow each
// other without a gap.
StructureFindings CheckARRIRAWFolder(const std::string& path);
StructureFindings CheckCanonRAWFolder(const std::string& path);
StructureFindings CheckCinemaDNGFolder(const std::string& path);

// Segments are numbered from 001 behind the clip folder's title.
StructureFindings CheckREDFolder(const std::string& path);

}  // namespace Sorvik
