// SPDX-License-Identifier: MIT
// Matroska and WebM files: elements, tracks, tags.
#include "FuzzReader.h"
#include "xmp/readers/MatroskaReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kMatroskaReader, {data, size}, "a.mkv");
  return 0;
}
