// SPDX-License-Identifier: MIT
// Where the pixels of a TIFF or DNG file are, from its image file directories. Facts: TIFF 6.0, DNG
// 1.4 and the CinemaDNG format. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/platform/FileSystem.h"

namespace Sorvik::formats {

struct TiffLayout {
  std::uint64_t end = 0;      // of the last strip or tile
  bool hasFrameRate = false;  // CinemaDNG: a frame of a recording, not a photograph
};

// nullopt if the file isn't TIFF or its first directory can't be read.
std::optional<TiffLayout> ReadTiffLayout(const platform::RegularFile& file);

// Whether the DNG file at `path` has a frame rate or a timecode; nullopt if it can't be read.
std::optional<bool> HasFrameRate(const std::string& path);

}  // namespace Sorvik::formats
