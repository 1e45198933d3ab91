// SPDX-License-Identifier: MIT
// What is missing from AVCHD cards, Canon XF cards and Sony HDV media.
#pragma once

#include <string>

#include "SorvikProvider/frame/StructureCheck.h"

namespace Sorvik {

// Each clip that a listed playlist names has a stream and clip information; each stream is handed
// out by an entry.
StructureFindings CheckAVCHDFolder(const std::string& path);

// Spans are numbered from 01 without a gap; a clip folder holds its clip information.
StructureFindings CheckCanonXFCard(const std::string& path);

// Each recording has an index beside its first file. A folder without a track list is whole.
StructureFindings CheckSonyHDVFolder(const std::string& path);

}  // namespace Sorvik
