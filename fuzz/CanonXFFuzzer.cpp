// SPDX-License-Identifier: MIT
// Clip XML of Canon XF cards.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "xmp/Namespaces.h"
#include "xmp/readers/CanonXFReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Sorvik::xmp;
  TXMPMeta native;
  const std::string_view xml(reinterpret_cast<const char*>(data), size);
  const bool found = ReadCanonXFClipXml(xml, native);
  if (found == native.Empty()) std::abort();
  // Stored positions are well-formed.
  std::string latitude;
  if (native.GetProperty(kNsEXIF, "GPSLatitude", &latitude)) {
    const bool north = latitude.ends_with('N') || latitude.ends_with('S');
    if (!north || latitude.find(',') == latitude.npos) std::abort();
  }
  return 0;
}
