// SPDX-License-Identifier: MIT
// Subtitles with flight data.
#include "FuzzReader.h"
#include "xmp/readers/SubtitleTelemetryReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::Fuzz(Sorvik::xmp::kSubtitleTelemetryReader, {data, size}, "a.srt", 0);
  return 0;
}
