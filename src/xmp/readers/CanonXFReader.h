// SPDX-License-Identifier: MIT
// Clips of Canon XF cards, CONTENTS/CLIPS001/AA0001/AA000101.MXF: first the facts of the clip XML
// next to the spans (AA0001.XML), then those of the span's own MXF.
//
// No schema of the clip XML is public. The metadata that users of these cameras can enter is known
// from the camera menus: a title, the creator, a location, a description, and a position from a GPS
// accessory. Elements are therefore found by these names, ignoring case, namespace and position in
// the tree; the first non-empty one counts.
#pragma once

#include <string_view>

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kCanonXFReader;

// Stores the facts of a clip XML. Returns true if there were any; false if it isn't well-formed.
bool ReadCanonXFClipXml(std::string_view xml, TXMPMeta& native);

}  // namespace Sorvik::xmp
