// SPDX-License-Identifier: MIT
// PNG files: XMP, Exif and the text chunks with registered keywords.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kPngReader;

}  // namespace Sorvik::xmp
