// SPDX-License-Identifier: MIT
// JPEG files: XMP, extended XMP and Exif of the APP1 segments in front of the image data.
#pragma once

#include <cstdint>
#include <optional>

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kJpegReader;

// Reads a JPEG file, also one inside of another file. Returns the tag Orientation of its Exif
// block; nullopt if it is missing.
std::optional<std::uint64_t> ReadJpeg(const ReaderInput& input, ReaderOutput& output);

}  // namespace Sorvik::xmp
