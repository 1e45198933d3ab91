// SPDX-License-Identifier: MIT
// RIFF files: AVI, WAV (RF64 and BW64 among them) and WebP.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kRiffReader;

}  // namespace Sorvik::xmp
