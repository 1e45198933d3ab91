// SPDX-License-Identifier: MIT
// Reads MPEG program streams, and the .MOI record next to the .MOD files of hard-disk cameras.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kProgramStreamReader;

}  // namespace Sorvik::xmp
