// SPDX-License-Identifier: MIT
// ARRIRAW frames (.ARI): the header in front of the image data.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kAriReader;

}  // namespace Sorvik::xmp
