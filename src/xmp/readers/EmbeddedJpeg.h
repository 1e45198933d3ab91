// SPDX-License-Identifier: MIT
// The JPEG preview of raw files, where some cameras store the metadata of the picture.
#pragma once

#include <cstdint>
#include <optional>

#include "xmp/Reader.h"

namespace Sorvik::xmp {

// Adds the metadata of the JPEG at `offset` of the file to what `output` has: properties that it
// lacks, and the packet if it has none. At most one read unless the segments are unusually long.
// Returns the tag Orientation of the JPEG; nullopt if it is missing.
std::optional<std::uint64_t> AddEmbeddedJpeg(const FileBytes& file, std::uint64_t offset,
                                             std::uint64_t length, ReaderOutput& output);

}  // namespace Sorvik::xmp
