// SPDX-License-Identifier: MIT
// The items of still images in ISO base media files (HEIC, AVIF), for their size, XMP and Exif.
// Facts: ISO/IEC 14496-12, 8.11; ISO/IEC 23008-12, 6.5, 9.3 and annex A.
#pragma once

#include "xmp/readers/IsoBoxes.h"

namespace Sorvik::xmp {

// Moves the first XMP item into `packet` if that is empty, and stores the size of the primary item
// and the facts of Exif items. Returns true if there were any facts.
bool ReadItemMetadata(FileWindow& file, const IsoBox& metaBox, TXMPMeta& meta, std::string& packet);

}  // namespace Sorvik::xmp
