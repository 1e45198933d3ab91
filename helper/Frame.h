// SPDX-License-Identifier: MIT
// Pictures of the helper program: decoding, and scaling to the size that the library asked for.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "thumbnails/FrameProtocol.h"

namespace frame {

struct Size {
  int width = 0;
  int height = 0;
};

// The maximum size of a picture; a side of 0 isn't limited.
struct Limits {
  int maxWidth = 0;
  int maxHeight = 0;
};

// Rows from the top, red, green and blue bytes without padding.
struct Frame {
  Size size;
  std::vector<std::uint8_t> pixels;

  bool Empty() const noexcept { return pixels.empty(); }
};

// Returns the size of a picture of `width` by `height` square pixels within `limits`, with its
// aspect ratio, never enlarged. Each side is at least 1 and at most kMaxSide.
Size FitSize(double width, double height, Limits limits);

// Returns a picture of the video file, as a player shows it: the key frame at 10 % of its duration
// or the last one before, or a later one if that is nearly black. Nullopt if nothing can be decoded
// within `milliseconds`.
std::optional<Frame> DecodeVideo(int descriptor, Limits limits, int milliseconds);

// Develops a raw picture at half its size: bilinear, with the white balance of the camera. Nullopt
// if the format is unknown or the file is damaged.
std::optional<Frame> DevelopRaw(int descriptor, Limits limits);

// Decodes the main picture of a HEIF file (HEIC, AVIF), or its thumbnail if that is large enough.
// Nullopt if the file is damaged.
std::optional<Frame> DecodeHeif(int descriptor, Limits limits);

}  // namespace frame
