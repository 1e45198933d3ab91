// SPDX-License-Identifier: MIT
// Blackmagic RAW: named values in the file, and JSON sidecars.
#include <string>

#include "FuzzReader.h"
#include "xmp/readers/BrawSidecarReader.h"
#include "xmp/readers/IsoMediaReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Sorvik::xmp;
  sorvik_fuzz::FuzzSeeking(kIsoMediaReader, {data, size}, "/none/a.braw");
  sorvik_fuzz::Fuzz(kBrawSidecarReader, {data, size}, "/none/a.sidecar");
  return 0;
}
