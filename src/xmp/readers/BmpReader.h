// SPDX-License-Identifier: MIT
// Reads the size of Windows bitmaps.
// Facts: Microsoft's BITMAPFILEHEADER and BITMAPINFOHEADER.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kBmpReader;

}  // namespace Sorvik::xmp
