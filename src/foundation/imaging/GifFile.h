// SPDX-License-Identifier: MIT
// The blocks of a GIF file (GIF89a, sections 18 to 27), as far as its first frame. The decoder
// reads all frames before it gives the first, in a time that grows with the square of their number.
// Any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "foundation/imaging/ImageSource.h"

namespace Sorvik::imaging {

// A GIF file of the first frame alone; nothing if that isn't wholly there, or if it or the logical
// screen has no pixels or more than kMaxPixels, about which the decoder would complain aloud.
std::optional<std::vector<std::byte>> FirstGifFrame(const ImageSource& source);

}  // namespace Sorvik::imaging
