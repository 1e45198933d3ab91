// SPDX-License-Identifier: MIT
// Scales a premultiplied picture with a triangle filter (bilinear), as wide as two pixels of the
// source when upscaling and of the target when downscaling. At the same size it copies the picture.
// Any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "foundation/imaging/Canvas.h"

namespace Sorvik::imaging {

// A picture with 4 bytes per pixel; `row` returns a row, counted from the top.
struct StretchSource {
  int width;
  int height;
  PixelLayout layout;
  std::function<std::span<const std::uint8_t>(int)> row;
};

// Draws `source` into `place` of `target`, which must be inside it. If no colour of the source is
// above its alpha, none of the result is.
void StretchPicture(const StretchSource& source, const Canvas& target, const Placement& place);

}  // namespace Sorvik::imaging
