// SPDX-License-Identifier: MIT
#include <cstdint>
#include <string>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "metadata/ValueConversion.h"
#include "xmp/Namespaces.h"
#include "xmp/XMPFiles.h"

namespace Sorvik::XMPSupport {
namespace {

// Reading, with a handler that knows the kind of file and limited scanning otherwise.
constexpr xmp::XMP_OptionBits kOpenFlags = 0x4A1;

constexpr std::size_t kTitleRow = 0;
constexpr std::size_t kDurationRow = 32;
constexpr std::size_t kScaleRow = 33;
constexpr std::size_t kFrameCountRow = 65;

// The properties that the conversion will look at.
xmp::WantedProperties WantedBy(const XMPFieldBits& fields) {
  auto wanted = xmp::WantedProperties::None();
  for (std::size_t row = 0; row < kFieldCount; ++row) {
    if (!fields.test(row)) continue;
    const XMPCrossReference& reference = kXMPCrossReference[row];
    if (row == kTitleRow) {
      wanted.Add(xmp::kNsDC, "title");
    } else if (row == kScaleRow || row == kFrameCountRow) {
      wanted.Add(xmp::kNsDM, kXMPCrossReference[kDurationRow].propertyName);
    } else if (reference.schemaNS[0] != '\0') {
      wanted.Add(reference.schemaNS, reference.propertyName);
    }
  }
  return wanted;
}

// Fills `meta` and tells whether the file has metadata. One that could be opened and then raised
// counts as having some, though nothing of it is known.
bool ReadMetadata(const std::string& path, const XMPFieldBits& fields, xmp::SXMPMeta& meta) {
  bool known = false;
  try {
    xmp::SXMPFiles files;
    files.SetWantedProperties(WantedBy(fields));
    if (!files.OpenFile(path, xmp::kXMP_UnknownFile, kOpenFlags)) return false;
    known = true;
    xmp::SXMPUtils::RemoveProperties(&meta, nullptr, nullptr, xmp::kXMPUtil_DoAllProperties);
    std::string packet;
    xmp::XMP_PacketInfo info;
    known = files.GetXMP(&meta, &packet, &info);
    files.CloseFile(0);
  } catch (...) {
    // No failure of one file reaches the caller; the fields stay empty.
  }
  return known;
}

}  // namespace

FieldValueMap MakeValue(const std::string& path, const XMPFieldBits& fields) {
  const foundation::CallScope scope;  // a card's lists serve several properties
  xmp::SXMPMeta meta;
  if (!ReadMetadata(path, fields, meta)) return {};
  return ConvertFields(meta, fields);
}

FieldValueMap MakeValue(const XMPFieldBits& fields, const std::string& xmpPacket) {
  xmp::SXMPMeta meta;
  try {
    meta.ParseFromBuffer(xmpPacket.data(), static_cast<std::uint32_t>(xmpPacket.size()));
  } catch (...) {
    return {};  // no failure of a packet reaches the caller
  }
  return ConvertFields(meta, fields);
}

}  // namespace Sorvik::XMPSupport
