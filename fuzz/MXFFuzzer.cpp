// SPDX-License-Identifier: MIT
// MXF files: KLV, partitions, primer, sets and their references, the footer of open headers.
#include "FuzzReader.h"
#include "xmp/readers/MXFReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The rest of the header, the document of the camera, the end, the footer, items of the first
  // frame.
  constexpr int kMaxReads = 4 + 32;
  sorvik_fuzz::Fuzz(Sorvik::xmp::kMXFReader, {data, size}, "clip.mxf", kMaxReads);
  return 0;
}
