// SPDX-License-Identifier: MIT
// CRW files: nested heaps.
#include "FuzzReader.h"
#include "xmp/readers/CrwReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kCrwReader, {data, size}, "a.crw");
  return 0;
}
