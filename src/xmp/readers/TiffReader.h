// SPDX-License-Identifier: MIT
// TIFF files and derived formats: DNG with its CinemaDNG tags, raw files of cameras.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kTiffReader;

}  // namespace Sorvik::xmp
