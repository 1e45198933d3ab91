// SPDX-License-Identifier: MIT
// A picture with straight alpha, upright.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "SorvikProvider/foundation/Bitplate.h"

namespace host {

// Rows from the top, four bytes a pixel: blue, green, red, alpha. Colours aren't multiplied by
// alpha. No pixels stand for no picture.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> pixels;

  bool Empty() const noexcept { return pixels.empty(); }
};

// Takes a thumbnail over and disposes of it; a null one gives no picture.
Picture TakePicture(Bitplate** plate);

// The picture as a PNG file; throws Failure if it can't be made.
std::string EncodePng(const Picture& picture);

std::string Base64(const std::string& bytes);

}  // namespace host
