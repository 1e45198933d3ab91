// SPDX-License-Identifier: MIT
// A top-down picture with straight (not premultiplied) alpha.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "SorvikProvider/foundation/Bitplate.h"

namespace host {

// Top-down rows of four bytes per pixel: blue, green, red, alpha. Empty pixels mean that there is
// no picture.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> pixels;

  bool Empty() const noexcept { return pixels.empty(); }
};

// Converts a thumbnail and disposes of it. Returns an empty picture for a null one.
Picture PictureFromBitplate(Bitplate** plate);

// Returns the picture as a PNG file. Throws Failure if encoding fails.
std::string EncodePng(const Picture& picture);

// True if no pixel is transparent.
bool IsOpaque(const Picture& picture);

// Returns an opaque picture as a JPEG file. Throws Failure if encoding fails.
std::string EncodeJpeg(const Picture& picture);

std::string Base64(const std::string& bytes);

}  // namespace host
