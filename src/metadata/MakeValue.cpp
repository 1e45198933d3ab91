// SPDX-License-Identifier: MIT
#include <cstdint>
#include <string>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/platform/ShareAccess.h"
#include "metadata/XMPFieldTable.h"
#include "xmp/XMPFiles.h"

namespace Sorvik::XMPSupport {
namespace {

// Open for reading, with a format-specific reader, or limited scanning for unknown formats.
constexpr xmp::XMP_OptionBits kOpenFlags = 0x4A1;

// Fills `meta` and returns whether the file has metadata. A file that was opened and whose metadata
// can't be read counts as having metadata.
bool ReadMetadata(const std::string& path, const XMPFieldBits& fields, xmp::SXMPMeta& meta) {
  bool hasMetadata = false;
  try {
    xmp::SXMPFiles files;
    files.SetWantedProperties(PropertiesOf(fields));
    if (!files.OpenFile(path, xmp::kXMP_UnknownFile, kOpenFlags)) return false;
    hasMetadata = true;
    xmp::SXMPUtils::RemoveProperties(&meta, nullptr, nullptr, xmp::kXMPUtil_DoAllProperties);
    std::string packet;
    xmp::XMP_PacketInfo info;
    hasMetadata = files.GetXMP(&meta, &packet, &info);
    files.CloseFile(0);
  } catch (...) {
    // Errors of one file aren't reported to the caller; its fields are empty.
  }
  return hasMetadata;
}

}  // namespace

FieldValueMap MakeValue(const std::string& path, const XMPFieldBits& fields) {
  const foundation::CallScope scope;  // the lists of a card are read once for several properties
  const platform::ShareScope shares(path);
  xmp::SXMPMeta meta;
  if (!ReadMetadata(path, fields, meta)) return {};
  return ConvertFields(meta, fields);
}

FieldValueMap MakeValue(const XMPFieldBits& fields, const std::string& xmpPacket) {
  xmp::SXMPMeta meta;
  try {
    meta.ParseFromBuffer(xmpPacket.data(), static_cast<std::uint32_t>(xmpPacket.size()));
  } catch (...) {
    return {};  // errors of a packet aren't reported to the caller
  }
  return ConvertFields(meta, fields);
}

}  // namespace Sorvik::XMPSupport

namespace Sorvik {

MachineFields ReadMachineValues(const std::string& path, const XMPSupport::XMPFieldBits& fields) {
  const foundation::CallScope scope;
  const platform::ShareScope shares(path);
  xmp::SXMPMeta meta;
  if (!XMPSupport::ReadMetadata(path, fields, meta)) return {};
  return XMPSupport::ConvertToMachineValues(meta, fields);
}

}  // namespace Sorvik
