// SPDX-License-Identifier: MIT
// Fallback for files of unknown format: finds a wrapped XMP packet anywhere in the file.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kScanReader;

}  // namespace Sorvik::xmp
