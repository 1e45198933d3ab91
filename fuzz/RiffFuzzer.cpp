// SPDX-License-Identifier: MIT
// AVI, WAV and WebP files: chunks, headers, texts, broadcast and iXML chunks, a DV frame.
#include "FuzzReader.h"
#include "xmp/readers/RiffReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kRiffReader, {data, size}, "a.avi");
  return 0;
}
