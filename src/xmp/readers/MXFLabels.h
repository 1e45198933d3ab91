// SPDX-License-Identifier: MIT
// Names for the labels of essence in MXF files. Facts: the SMPTE label registry, RDD 9, RDD 44.
#pragma once

#include <optional>

#include "xmp/readers/MXFSets.h"

namespace Sorvik::xmp::mxf {

// The name of a picture coding (PictureEssenceCoding), or null.
const char* PictureCodingName(const std::optional<Key>& coding);
// The name of what an essence container holds, where the coding is missing; null for sound.
const char* ContainerName(const std::optional<Key>& container);
// The name of a sound compression; "PCM" if there is no label or that of uncompressed sound.
const char* SoundCodingName(const std::optional<Key>& coding);
// True for codings of the DV family, whose fields come bottom first in 525 and 625 lines.
bool IsDV(const std::optional<Key>& coding);
// "CCIR-709", "CCIR-601" or null, from coding equations, primaries or transfer characteristic.
const char* ColorSpaceName(const std::optional<Key>& label);

}  // namespace Sorvik::xmp::mxf
