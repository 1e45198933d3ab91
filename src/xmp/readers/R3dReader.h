// SPDX-License-Identifier: MIT
// RED clips: segments of a recording (.R3D) and the RMD file next to them (.RMD).
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kR3dReader;
extern const Reader kRmdReader;

}  // namespace Sorvik::xmp
