// SPDX-License-Identifier: MIT
// Canon RAW frames (.RMF): the head in front of the picture.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kRmfReader;

}  // namespace Sorvik::xmp
