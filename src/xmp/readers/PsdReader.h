// SPDX-License-Identifier: MIT
// PSD and PSB files: XMP, Exif and IPTC of the image resources. A packet inside of an embedded
// picture is ignored.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kPsdReader;

}  // namespace Sorvik::xmp
