// SPDX-License-Identifier: MIT
// What is missing from Canon XF cards and Sony HDV media.
#pragma once

#include <string>

#include "SorvikProvider/frame/StructureCheck.h"

namespace Sorvik {

// Spans are numbered from 01 without a gap; a clip folder holds its clip information.
StructureFindings CheckCanonXFCard(const std::string& path);

// Each recording has an index beside its first file, and the folder its track list.
StructureFindings CheckSonyHDVFolder(const std::string& path);

}  // namespace Sorvik
