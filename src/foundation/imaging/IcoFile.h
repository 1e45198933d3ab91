// SPDX-License-Identifier: MIT
// The directory of an ICO file (the layout of Windows icon resources: a head of 6 bytes, then
// entries of 16), from which one picture is taken. All offsets and lengths are checked here, before
// a decoder sees the bytes. Any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "foundation/imaging/ImageSource.h"

namespace Sorvik::imaging {

struct IcoPicture {
  // A whole PNG file, or an ICO file with this one picture.
  std::vector<std::byte> bytes;
  bool isPng;
};

// The picture of the greatest area and, among those, of the most bits a pixel; nothing if the
// directory has none whose bytes are all in the file.
std::optional<IcoPicture> LargestIcoPicture(const ImageSource& source);

}  // namespace Sorvik::imaging
