// SPDX-License-Identifier: MIT
// The blocks of a GIF file (GIF89a, sections 18 to 27) up to its first frame. The decoder reads all
// frames before it returns the first, in quadratic time. Any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "foundation/imaging/ImageSource.h"

namespace Sorvik::imaging {

// Returns a GIF file with only the first frame. Returns nullopt if that is truncated, or if it or
// the logical screen has no pixels or more than kMaxPixels, for which the decoder would log
// warnings.
std::optional<std::vector<std::byte>> FirstGifFrame(const ImageSource& source);

}  // namespace Sorvik::imaging
