// SPDX-License-Identifier: MIT
// SVG files: the metadata element.
#include "FuzzReader.h"
#include "xmp/readers/SvgReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::Fuzz(Sorvik::xmp::kSvgReader, {data, size}, "a.svg", 2);
  return 0;
}
