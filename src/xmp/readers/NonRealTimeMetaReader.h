// SPDX-License-Identifier: MIT
// NonRealTimeMeta XML of Sony media (XDCAM discs, SxS, XQD and consumer cards, XDCAM EX), all
// versions. Facts missing from a clip's XML come from the material list of its card, which is read
// once per call. Facts: camera files, and public readers for what those don't show.
#pragma once

#include <string_view>

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kNonRealTimeMetaReader;

// Reads a document in memory, so without a card. Returns false if it isn't NonRealTimeMeta XML.
bool ReadNonRealTimeMeta(std::string_view bytes, TXMPMeta& native);

// Adds the facts of a document inside a media file: its dates, which have a time zone, replace
// those in `meta`, other facts only fill in what is missing.
void AddNonRealTimeFacts(TXMPMeta&& document, TXMPMeta& meta);

}  // namespace Sorvik::xmp
