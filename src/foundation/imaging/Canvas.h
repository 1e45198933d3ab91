// SPDX-License-Identifier: MIT
// Drawing targets: a buffer of 32-bit pixels (not owned), the byte order of pixels, and the part of
// the buffer that a picture covers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace Sorvik::imaging {

// The size of a pixel in bytes, and the offsets of the colours in it.
struct PixelLayout {
  int bytes;
  int red;
  int green;
  int blue;
};

inline constexpr PixelLayout kRGB{3, 0, 1, 2};
inline constexpr PixelLayout kRGBA{4, 0, 1, 2};
inline constexpr PixelLayout kBGRA{4, 2, 1, 0};

// The part of a cell that a picture covers, relative to the cell's top left corner.
struct Placement {
  int x;
  int y;
  int width;
  int height;
};

// Pixels are blue, green, red, alpha. Row 0 is the top of the cell; if `bottomUp` it is the last
// row in memory.
struct Canvas {
  unsigned char* pixels;
  std::size_t rowBytes;
  int width;
  int height;
  bool bottomUp = false;

  std::span<std::uint8_t> Row(int y) const noexcept {
    const auto row = static_cast<std::size_t>(bottomUp ? height - 1 - y : y);
    return {pixels + row * rowBytes, static_cast<std::size_t>(width) * 4};
  }
};

}  // namespace Sorvik::imaging
