// SPDX-License-Identifier: MIT
// Clip XML of Sony media.
#include <cstdint>
#include <string>

#include "FuzzReader.h"
#include "xmp/readers/NonRealTimeMetaReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Sorvik::xmp;
  sorvik_fuzz::Fuzz(kNonRealTimeMetaReader, {data, size}, {});
  TXMPMeta native;
  ReadNonRealTimeMeta({reinterpret_cast<const char*>(data), size}, native);
  std::string text;
  if (native.GetStructField(kNsDM, "startTimecode", kNsDM, "timeValue", &text)) {
    sorvik_fuzz::Check(text.size() == 11);
  }
  if (native.GetProperty(kNsEXIF, "GPSLatitude", &text)) {
    sorvik_fuzz::Check(text.find(',') != text.npos);
  }
  if (native.GetProperty(kNsDM, "good", &text)) {
    sorvik_fuzz::Check(text == "True" || text == "False");
  }
  return 0;
}
