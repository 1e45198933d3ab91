// SPDX-License-Identifier: MIT
// Extracts one picture from an ICO file (the layout of Windows icon resources: a header of 6 bytes,
// then entries of 16). Checks all offsets and lengths before a decoder reads the bytes. Any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "foundation/imaging/ImageSource.h"

namespace Sorvik::imaging {

struct IcoPicture {
  // A PNG file, or an ICO file with only this picture.
  std::vector<std::byte> bytes;
  bool isPng;
};

// Returns the picture with the largest area; among equal ones, that with the most bits per pixel.
// Returns nullopt if no entry's bytes are completely in the file.
std::optional<IcoPicture> LargestIcoPicture(const ImageSource& source);

}  // namespace Sorvik::imaging
