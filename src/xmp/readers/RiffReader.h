// SPDX-License-Identifier: MIT
// RIFF files: AVI, WAV (including RF64 and BW64) and WebP.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kRiffReader;

}  // namespace Sorvik::xmp
