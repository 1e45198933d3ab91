// SPDX-License-Identifier: MIT
// JPEG files: XMP, extended XMP and Exif of the APP1 segments in front of the image data.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kJpegReader;

}  // namespace Sorvik::xmp
