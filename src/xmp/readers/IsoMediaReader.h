// SPDX-License-Identifier: MIT
// ISO base media files: MP4, MOV and derived formats, including images (HEIC, AVIF).
// XMP, tracks, texts and items.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kIsoMediaReader;

}  // namespace Sorvik::xmp
