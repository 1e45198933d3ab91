// SPDX-License-Identifier: MIT
// Conversion of decoded video frames to pictures.
#pragma once

#include <cstdint>
#include <optional>

#include "Frame.h"

extern "C" {
#include <libavutil/frame.h>
}

namespace frame {

// How the picture is stored: what a player undoes before it shows it.
struct Presentation {
  AVRational pixelAspect{1, 1};
  int quarterTurns = 0;   // clockwise
  bool mirrored = false;  // left to right, before the turns
};

// Converts a frame to a picture: of an interlaced frame one field, with square pixels, upright, HDR
// converted to SDR. Returns nullopt if that isn't possible.
std::optional<Frame> ConvertFrame(const AVFrame& frame, const Presentation& presentation,
                                  Limits limits);

// Decoded pixels of a library: rows from the top, of grey, or of red, green and blue bytes.
struct Pixels {
  std::uint8_t* data;
  int width;
  int height;
  int stride;
  int colours;  // 1 or 3
};
std::optional<Frame> ScalePixels(const Pixels& pixels, Limits limits);

}  // namespace frame
