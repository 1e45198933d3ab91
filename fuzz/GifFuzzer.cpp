// SPDX-License-Identifier: MIT
// GIF files: the application extension of XMP.
#include "FuzzReader.h"
#include "xmp/readers/GifReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kGifReader, {data, size}, "a.gif");
  return 0;
}
