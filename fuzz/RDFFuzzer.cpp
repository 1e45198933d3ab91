// SPDX-License-Identifier: MIT
// XMP packets: scanning, parsing, and conversion to display texts.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "xmp/PacketScan.h"
#include "xmp/XMPMeta.h"

namespace {

using namespace Sorvik;

void Check(bool holds) {
  if (!holds) std::abort();
}

void CheckFields(const std::string& packet) {
  xmp::TXMPMeta meta;
  bool parsed = true;
  try {
    meta.ParseFromBuffer(packet.data(), static_cast<std::uint32_t>(packet.size()));
  } catch (const xmp::XMP_Error& error) {
    Check(error.GetID() == xmp::kXMPErr_BadXML || error.GetID() == xmp::kXMPErr_BadRDF);
    Check(meta.Empty());
    parsed = false;
  }
  XMPSupport::XMPFieldBits all;
  all.set();
  const FieldValueMap fields = XMPSupport::MakeValue(all, packet);
  // Only the title and the scale can be missing if the packet parses; three rows always are.
  Check(parsed ? fields.size() + 5 >= XMPSupport::kFieldCount : fields.empty());
  // Merging an object with itself changes nothing.
  xmp::TXMPMeta twice = meta;
  twice.FillFrom(meta);
  Check(twice.Empty() == meta.Empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const std::string_view found = xmp::FindPacket(bytes);
  Check(found.size() <= bytes.size());
  if (!found.empty()) CheckFields(std::string(found));
  CheckFields(bytes);
  return 0;
}
