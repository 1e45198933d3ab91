// SPDX-License-Identifier: MIT
// MXF files: KLV, partitions, primer, sets and their references, the footer of open headers.
#include "FuzzReader.h"
#include "xmp/readers/MXFReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::Fuzz(Sorvik::xmp::kMXFReader, {data, size}, "clip.mxf");
  return 0;
}
