// SPDX-License-Identifier: MIT
// ID3 tags: frames up to that of XMP.
#include "FuzzReader.h"
#include "xmp/readers/Id3Reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kId3Reader, {data, size}, "a.mp3");
  return 0;
}
