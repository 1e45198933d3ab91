// SPDX-License-Identifier: MIT
// Metadata of media files as display texts. All functions may be called on any thread.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik::XMPSupport {

// A row of the field table: a field of the browse model, its XMP property and its label.
struct XMPCrossReference {
  const char* propertyName;  // the field's name, and the local name of its property
  const char* labelKey;      // "$$$/path=Default label"
  const char* schemaNS;      // namespace of the property; empty for fields without a property
};

// The number of rows of the field table.
inline constexpr std::size_t kFieldCount = 77;

// A set of fields: bit n is row n of the field table.
using XMPFieldBits = std::bitset<kFieldCount>;

// The field table. The index of a row is stable across versions.
SORVIK_EXPORT extern const XMPCrossReference kXMPCrossReference[kFieldCount];

// Returns the rows of the named fields. Unknown names are ignored.
SORVIK_EXPORT XMPFieldBits ParseFields(const FieldNameSet& fields);

// Returns the wanted fields of the media file at `path` (UTF-8), all as strings. Returns an empty
// map if the file can't be read or has no metadata. A property that is missing or invalid gives an
// empty string; Path, ExtraPath and ProxyPath are never set. Blocks while it reads the file, its
// sidecars and, for some cameras, further files of the card. Never throws for bad data.
SORVIK_EXPORT FieldValueMap MakeValue(const std::string& path, const XMPFieldBits& fields);
// Returns the wanted fields of a serialised XMP packet; an empty map if it can't be parsed.
SORVIK_EXPORT FieldValueMap MakeValue(const XMPFieldBits& fields, const std::string& xmpPacket);

// Returns the non-drop timecode "HH:MM:SS:FF" of a frame count at a frame duration in seconds, such
// as "1001/30000". Returns an empty string if `rate` isn't one of the eleven supported texts.
SORVIK_EXPORT std::string GetTimecodeFromDuration(const std::int64_t& frames,
                                                  const std::string& rate);

// Parses a frame count such as "1234 @ 1001/30000". Returns false and leaves the outputs unchanged
// if `text` isn't one.
SORVIK_EXPORT bool ParseFrameCount(const std::string& text, std::int64_t& frames,
                                   std::string& rate);

}  // namespace Sorvik::XMPSupport
