// SPDX-License-Identifier: MIT
// PSD files: image resources with XMP, Exif and IPTC records.
#include "FuzzReader.h"
#include "xmp/readers/PsdReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kPsdReader, {data, size}, "a.psd");
  return 0;
}
