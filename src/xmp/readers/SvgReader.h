// SPDX-License-Identifier: MIT
// SVG files: the XMP in a metadata element, with or without packet wrapper. Packets inside of
// embedded pictures are encoded and never found.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kSvgReader;

}  // namespace Sorvik::xmp
