// SPDX-License-Identifier: MIT
// RAF files: records and the JPEG preview.
#include "FuzzReader.h"
#include "xmp/readers/RafReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kRafReader, {data, size}, "a.raf");
  return 0;
}
