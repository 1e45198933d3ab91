// SPDX-License-Identifier: MIT
// Stretches a premultiplied picture to another size with a smooth filter: a triangle as wide as two
// pixels of the source when growing, of the target when shrinking. At its own size a picture is
// copied unchanged. Any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "foundation/imaging/Canvas.h"

namespace Sorvik::imaging {

// A picture of 4 bytes a pixel, given by its rows from the top.
struct StretchSource {
  int width;
  int height;
  PixelLayout layout;
  std::function<std::span<const std::uint8_t>(int)> row;
};

// Draws the whole of `source` over `place` of `target`, which must lie within it. Colours never
// come out above their alpha where they weren't in the source.
void StretchPicture(const StretchSource& source, const Canvas& target, const Placement& place);

}  // namespace Sorvik::imaging
