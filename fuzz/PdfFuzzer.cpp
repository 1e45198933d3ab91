// SPDX-License-Identifier: MIT
// PDF files: cross-reference tables and streams, object streams, the catalog.
#include "FuzzReader.h"
#include "xmp/readers/PdfReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kPdfReader, {data, size}, "a.pdf");
  return 0;
}
