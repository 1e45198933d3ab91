// SPDX-License-Identifier: MIT
// The settings of lens and camera that cameras record with each frame of an MXF file. Only the
// first frame is read. Facts: SMPTE RDD 18 (acquisition metadata), ST 436 (ancillary data), ST
// 377-1.
#pragma once

#include <cstdint>

#include "xmp/Reader.h"

namespace Sorvik::xmp::mxf {

// Searches the items of the first frame at or after the offset `essence` of the file. At most 32
// reads; 2 to 4 in files of cameras.
void SetAcquisition(const ReaderInput& input, std::uint64_t essence, TXMPMeta& meta);

}  // namespace Sorvik::xmp::mxf
