// SPDX-License-Identifier: MIT
// The timing of an ISO base media file; see MediaTiming.h.
#pragma once

#include <optional>

#include "formats/MediaTiming.h"
#include "foundation/platform/FileSystem.h"

namespace Sorvik::formats {

// Reads the box "moov" only. Returns nullopt for fragmented files and for more than one edit.
std::optional<MediaTiming> ReadIsoTiming(const platform::RegularFile& file);

}  // namespace Sorvik::formats
