// SPDX-License-Identifier: MIT
// TIFF and DNG files: directories of tags and their values.
#include "FuzzReader.h"
#include "xmp/readers/TiffReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kTiffReader, {data, size}, "a.dng");
  return 0;
}
