// SPDX-License-Identifier: MIT
// Video files with a known picture, encoded by the program ffmpeg.
#pragma once

#include <string>

#include "SorvikProvider/foundation/Bitplate.h"
#include "support/ImageFiles.h"

namespace sorvik_test {

// Frames of a video by MakeVideo.
inline constexpr int kVideoFrames = 50;

struct VideoOptions {
  int width = 320;
  int height = 240;
  // Options of ffmpeg for the encoder and the container.
  std::string encoding = "-c:v mpeg2video -q:v 2 -g 1 -pix_fmt yuv420p";
  // Filters after the picture has been drawn, such as "vflip".
  std::string filters = "null";
  bool sound = false;
};

// Encodes 50 frames of 1/25 s. The upper left of the picture is red, the upper right green, the
// lower left blue, the lower right yellow. In the lowest eighth of frame n, a white bar on black
// covers n fiftieths of the width. Returns false if ffmpeg isn't installed or fails.
bool MakeVideo(const std::string& path, const VideoOptions& options = {});

// The pixel of a buffer at a place between 0 and 1.
Pixel PixelAt(Bitplate** plate, double x, double y);

// True if the buffer shows the four colours, in the order upper left, upper right, lower left,
// lower right.
bool ShowsColours(Bitplate** plate, const Pixel& upperLeft = kRed, const Pixel& upperRight = kGreen,
                  const Pixel& lowerLeft = kBlue, const Pixel& lowerRight = kYellow);

// The number of the frame in an upright picture; -1 if it has no bar.
int FrameNumber(Bitplate** plate);

}  // namespace sorvik_test
