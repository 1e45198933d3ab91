// SPDX-License-Identifier: MIT
// RED segments: head, directory, end block.
#include "FuzzReader.h"
#include "xmp/readers/R3dReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kR3dReader, {data, size}, "A001_C001_0101AA_001.R3D");
  return 0;
}
