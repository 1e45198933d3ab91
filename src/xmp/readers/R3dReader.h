// SPDX-License-Identifier: MIT
// RED clips: segments of a recording (.R3D) and the file of looks beside them (.RMD).
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kR3dReader;
extern const Reader kRmdReader;

}  // namespace Sorvik::xmp
