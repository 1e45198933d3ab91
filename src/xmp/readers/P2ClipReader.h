// SPDX-License-Identifier: MIT
// Clip XML of Panasonic P2 cards, CONTENTS/CLIP/<id>.XML (P2Main, with or without a namespace), and
// its sibling written by cameras without P2 cards (ClipMain). Facts: labels of the camera manuals,
// values as read by public readers of these files.
#pragma once

#include <string_view>

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kP2ClipReader;

// Reads a document in memory. Returns false if it isn't P2 clip XML.
bool ReadP2Clip(std::string_view bytes, TXMPMeta& native);

}  // namespace Sorvik::xmp
