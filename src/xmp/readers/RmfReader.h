// SPDX-License-Identifier: MIT
// Canon RAW frames (.RMF): the header in front of the image data.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kRmfReader;

}  // namespace Sorvik::xmp
