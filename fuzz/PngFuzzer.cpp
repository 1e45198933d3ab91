// SPDX-License-Identifier: MIT
// PNG files: chunks before and after the image data, compressed texts, Exif.
#include "FuzzReader.h"
#include "xmp/readers/PngReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kPngReader, {data, size}, "a.png");
  return 0;
}
