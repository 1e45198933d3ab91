// SPDX-License-Identifier: MIT
// PNG files: chunks in front of and behind the picture, packed texts, Exif.
#include "FuzzReader.h"
#include "xmp/readers/PngReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzJumps(Sorvik::xmp::kPngReader, {data, size}, "a.png");
  return 0;
}
