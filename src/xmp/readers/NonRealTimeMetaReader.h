// SPDX-License-Identifier: MIT
// NonRealTimeMeta XML of Sony media (XDCAM discs, SxS, XQD and consumer cards, XDCAM EX), of all
// versions. What a clip's own XML lacks comes from the material list of its card, which a call
// reads once. Facts: files of cameras, and public readers where those show nothing.
#pragma once

#include <string_view>

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kNonRealTimeMetaReader;

// The reading behind it, for bytes in memory and so without a card; false if they are no such
// document.
bool ReadNonRealTimeMeta(std::string_view bytes, TXMPMeta& native);

}  // namespace Sorvik::xmp
