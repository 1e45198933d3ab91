// SPDX-License-Identifier: MIT
// Canon RAW frames: the head.
#include "FuzzReader.h"
#include "xmp/readers/RmfReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::Fuzz(Sorvik::xmp::kRmfReader, {data, size}, "a.RMF");
  return 0;
}
