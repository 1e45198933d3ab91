// SPDX-License-Identifier: MIT
// MXF files of cameras, recorders and editors (SMPTE ST 377-1): P2, XDCAM, Canon XF and others.
//
// Reads the header partition; beyond the head of the file at most three further parts, each
// bounded: the rest of long header metadata, the tail, and the footer partition, the latter two
// only if the header was left open by its writer and the duration is wanted.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kMXFReader;

}  // namespace Sorvik::xmp
