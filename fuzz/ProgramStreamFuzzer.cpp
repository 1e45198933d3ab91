// SPDX-License-Identifier: MIT
// MPEG program streams: packets, video and audio headers.
#include "FuzzReader.h"
#include "xmp/readers/ProgramStreamReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kProgramStreamReader, {data, size}, "a.mpg");
  return 0;
}
