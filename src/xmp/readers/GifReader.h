// SPDX-License-Identifier: MIT
// GIF files: XMP in an application extension.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kGifReader;

}  // namespace Sorvik::xmp
