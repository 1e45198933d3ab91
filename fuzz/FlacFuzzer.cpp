// SPDX-License-Identifier: MIT
// FLAC: the first block.
#include "FuzzReader.h"
#include "xmp/readers/FlacReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kFlacReader, {data, size}, "a.flac");
  return 0;
}
