// SPDX-License-Identifier: MIT
// Premultiplication of colours with alpha.
#pragma once

#include <cstdint>

namespace Sorvik::imaging {

// Returns `colour` * `alpha` / 255, rounded to nearest.
constexpr std::uint8_t Premultiplied(std::uint8_t colour, std::uint8_t alpha) noexcept {
  const unsigned product = static_cast<unsigned>(colour) * alpha + 128;
  return static_cast<std::uint8_t>((product + (product >> 8)) >> 8);
}

}  // namespace Sorvik::imaging
