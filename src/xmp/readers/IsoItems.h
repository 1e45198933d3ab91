// SPDX-License-Identifier: MIT
// The items of which pictures in ISO base media files are made (HEIC, AVIF): XMP and Exif among
// them. Facts: ISO/IEC 14496-12, 8.11; ISO/IEC 23008-12, annex A.
#pragma once

#include "xmp/readers/IsoBoxes.h"

namespace Sorvik::xmp {

// Takes the first item of XMP into `packet`, unless it holds some already, and stores what Exif
// items tell. True if these told anything.
bool TakeItems(FileWindow& file, const IsoBox& metaBox, TXMPMeta& meta, std::string& packet);

}  // namespace Sorvik::xmp
