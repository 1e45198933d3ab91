// SPDX-License-Identifier: MIT
// Clip XML of Panasonic P2 cards, CONTENTS/CLIP/<id>.XML (P2Main, with any namespace or none), and
// its sibling that the maker's cameras without P2 cards write (ClipMain). Facts: labels of the
// maker's manuals, values as public readers of these files take them.
#pragma once

#include <string_view>

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kP2ClipReader;

// The reading behind it, for bytes in memory; false if they are no such document.
bool ReadP2Clip(std::string_view bytes, TXMPMeta& native);

}  // namespace Sorvik::xmp
