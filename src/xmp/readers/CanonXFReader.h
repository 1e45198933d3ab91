// SPDX-License-Identifier: MIT
// Clips of Canon XF cards, CONTENTS/CLIPS001/AA0001/AA000101.MXF: what the camera's clip XML beside
// the spans says (AA0001.XML), and behind it what the span's own MXF says.
//
// No schema of the clip XML is public. What cameras of this family let a user enter is known from
// their menus: a title, the creator, a place, a description, and a position from an accessory. So
// elements are found by these names, whatever the case, the namespace and the place in the tree;
// the first with a text counts.
#pragma once

#include <string_view>

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kCanonXFReader;

// Stores the facts of a clip XML; true if there were any. What isn't well-formed has none.
bool ReadCanonXFClipXml(std::string_view xml, TXMPMeta& native);

}  // namespace Sorvik::xmp
