// SPDX-License-Identifier: MIT
// Clip XML of P2 cards.
#include <cstdint>
#include <string>

#include "FuzzReader.h"
#include "xmp/readers/P2ClipReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Sorvik::xmp;
  sorvik_fuzz::Fuzz(kP2ClipReader, {data, size}, "0001AA.XML");
  TXMPMeta native;
  ReadP2Clip({reinterpret_cast<const char*>(data), size}, native);
  // Shot completion splits links at these characters.
  std::string link;
  for (std::int32_t i = 1; native.GetArrayItem(kNsDC, "relation", i, &link); ++i) {
    sorvik_fuzz::Check(i <= 4 && link.find(':') == link.rfind(':') &&
                       link.find_first_of("; ") == link.npos);
  }
  std::string time;
  if (native.GetStructField(kNsDM, "startTimecode", kNsDM, "timeValue", &time)) {
    sorvik_fuzz::Check(time.size() == 11);
  }
  return 0;
}
