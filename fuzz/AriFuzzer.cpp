// SPDX-License-Identifier: MIT
// ARRIRAW frames: the header.
#include "FuzzReader.h"
#include "xmp/readers/AriReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::Fuzz(Sorvik::xmp::kAriReader, {data, size}, "a.ari");
  return 0;
}
