// SPDX-License-Identifier: MIT
// Raw DV: the packs of a frame, and the date in the file names of recorders.
#include "FuzzReader.h"
#include "xmp/readers/DVReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sorvik_fuzz::Fuzz(Sorvik::xmp::kDVReader, {data, size}, "/00_0001_2009-03-14_101530.DV");
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto date = Sorvik::xmp::DateFromRecorderName(text);
  sorvik_fuzz::Check(!date || date->Valid());
  return 0;
}
