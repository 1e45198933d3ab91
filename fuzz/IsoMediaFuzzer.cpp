// SPDX-License-Identifier: MIT
// MP4 and MOV files: boxes, tracks, sample descriptions, texts.
#include "FuzzReader.h"
#include "xmp/readers/IsoMediaReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kIsoMediaReader, {data, size}, "a.mp4");
  return 0;
}
