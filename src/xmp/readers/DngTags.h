// SPDX-License-Identifier: MIT
// The tags that DNG, including CinemaDNG, adds to TIFF, as properties.
// Facts: DNG 1.4, chapter 4; CinemaDNG 1.1.
#pragma once

#include "xmp/readers/TiffWalker.h"

namespace Sorvik::xmp {

// True if `first` is the first directory of a DNG file.
bool IsDng(const TiffDirectory& first) noexcept;

// Stores the DNG facts, replacing those of TIFF and Exif tags. Stores no duration: the file is a
// single frame.
void SetDngTags(TiffWalker& walker, const TiffDirectory& first, TXMPMeta& meta);

}  // namespace Sorvik::xmp
