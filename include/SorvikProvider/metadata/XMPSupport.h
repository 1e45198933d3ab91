// SPDX-License-Identifier: MIT
// Metadata of media files as display texts.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik::XMPSupport {

// A row of the field table: a field of the browse model, the XMP property behind it and its label.
struct XMPCrossReference {
  const char* propertyName;  // local name of the property, and the field's name
  const char* labelKey;      // "$$$/path=Default label"
  const char* schemaNS;      // namespace of the property; empty for a field that is none
};

inline constexpr std::size_t kFieldCount = 77;

// A bit for each row of the table: the fields that a caller wants.
using XMPFieldBits = std::bitset<kFieldCount>;

SORVIK_EXPORT extern const XMPCrossReference kXMPCrossReference[kFieldCount];

// The rows that `fields` names; names that no row carries are dropped.
SORVIK_EXPORT XMPFieldBits ParseFields(const FieldNameSet& fields);

// The fields of the media file at `path`, every value a string. Empty if the file can't be read or
// holds no metadata. Path, ExtraPath and ProxyPath are never produced. Never throws for bad data.
SORVIK_EXPORT FieldValueMap MakeValue(const std::string& path, const XMPFieldBits& fields);
// The fields of a serialised XMP packet; empty if it can't be parsed.
SORVIK_EXPORT FieldValueMap MakeValue(const XMPFieldBits& fields, const std::string& xmpPacket);

// Timecode HH:MM:SS:FF of a count of frames at a rate such as "1001/30000"; empty if the rate isn't
// one of the eleven known texts.
SORVIK_EXPORT std::string GetTimecodeFromDuration(const std::int64_t& frames,
                                                  const std::string& rate);

// Takes a text such as "1234 @ 1001/30000" apart. False, and both outputs stay, if it is none.
SORVIK_EXPORT bool ParseFrameCount(const std::string& text, std::int64_t& frames,
                                   std::string& rate);

}  // namespace Sorvik::XMPSupport
