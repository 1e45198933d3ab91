// SPDX-License-Identifier: MIT
// Image resource blocks, which carry the metadata of PSD files and, in JPEG and TIFF files, their
// IPTC records.
// Facts: the published description of the PSD file format, "Image Resources Section".
#pragma once

#include "foundation/ByteReader.h"
#include "xmp/Reader.h"

namespace Sorvik::xmp {

// Reads the resources 1060 (XMP, unless `output` has a packet), 1058 (Exif) and 1028 (IPTC-IIM).
// Properties of earlier sources are kept.
void ReadImageResources(foundation::ByteReader resources, ReaderOutput& output);

}  // namespace Sorvik::xmp
