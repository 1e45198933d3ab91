// SPDX-License-Identifier: MIT
// Names for the essence labels of MXF files. Facts: the SMPTE label registry, RDD 9, RDD 44.
#pragma once

#include <optional>

#include "xmp/readers/MXFSets.h"

namespace Sorvik::xmp::mxf {

// Returns the name of a picture coding (PictureEssenceCoding), or null.
const char* PictureCodingName(const std::optional<Key>& coding);
// Returns the name of the codec of an essence container, for files without a coding label; null for
// audio.
const char* ContainerName(const std::optional<Key>& container);
// Returns the name of an audio compression; "PCM" without a label or with that of uncompressed
// audio.
const char* SoundCodingName(const std::optional<Key>& coding);
// True for codings of the DV family, which are lower field first in 525 and 625 lines.
bool IsDV(const std::optional<Key>& coding);
// Returns "CCIR-709", "CCIR-601" or null, from coding equations, primaries or transfer
// characteristic.
const char* ColorSpaceName(const std::optional<Key>& label);

}  // namespace Sorvik::xmp::mxf
