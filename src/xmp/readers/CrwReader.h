// SPDX-License-Identifier: MIT
// Raw files of older Canon cameras (CRW), and files with the same structure.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kCrwReader;

}  // namespace Sorvik::xmp
