// SPDX-License-Identifier: MIT
// JPEG files: segments, extended XMP, Exif.
#include "FuzzReader.h"
#include "xmp/readers/JpegReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kJpegReader, {data, size}, "a.jpg");
  return 0;
}
