// SPDX-License-Identifier: MIT
// Any file at all: whatever holds a wrapped XMP packet has metadata.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kScanReader;

}  // namespace Sorvik::xmp
