// SPDX-License-Identifier: MIT
// JPEG pictures inside of media files: previews of raw pictures, covers and thumbnails of videos.
// Finds them by the structure of the file, with a limited number of short reads; the pictures
// themselves aren't read. Any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "xmp/Reader.h"

namespace Sorvik {

struct EmbeddedPicture {
  std::uint64_t offset = 0;  // of the JPEG in the file
  std::uint64_t length = 0;
};

struct EmbeddedPictures {
  std::vector<EmbeddedPicture> pictures;  // the largest first, at most three
  int orientation = 1;                    // of the file's picture, as in Exif: 1 to 8
};

// TIFF, DNG and raw files based on TIFF; RAF; ISO base media files (MP4, MOV, CR3, CRM). For a JPEG
// file only the orientation. `input.path` isn't used.
EmbeddedPictures FindEmbeddedPictures(const xmp::ReaderInput& input);
// The same for a file on disk. Empty if it can't be read.
EmbeddedPictures FindEmbeddedPictures(const std::string& path);

}  // namespace Sorvik
