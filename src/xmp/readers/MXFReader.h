// SPDX-License-Identifier: MIT
// MXF files of cameras, recorders and editors (SMPTE ST 377-1): P2, XDCAM, Canon XF and others.
//
// Reads the header partition. Outside the head of the file, at most three further bounded reads:
// the rest of long header metadata, and, only if the header is open and the duration is wanted, the
// tail and the footer partition.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kMXFReader;

}  // namespace Sorvik::xmp
