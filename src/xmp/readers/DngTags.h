// SPDX-License-Identifier: MIT
// The tags that DNG adds to TIFF, those of CinemaDNG among them, as properties.
// Facts: DNG 1.4, chapter 4; CinemaDNG 1.1.
#pragma once

#include "xmp/readers/TiffWalker.h"

namespace Sorvik::xmp {

// True if the first directory is that of a DNG file.
bool IsDng(const TiffDirectory& first) noexcept;

// Stores what a DNG file tells beyond the tags of TIFF and Exif, and over them: one frame has no
// duration.
void SetDngTags(TiffWalker& walker, const TiffDirectory& first, TXMPMeta& meta);

}  // namespace Sorvik::xmp
