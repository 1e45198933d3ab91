// SPDX-License-Identifier: MIT
#include "support/Video.h"

#include <cmath>
#include <cstdlib>

namespace sorvik_test {
namespace {

// Lossy encoders, and conversions between colour spaces.
constexpr int kTolerance = 40;

bool IsNear(const Pixel& a, const Pixel& b) {
  return std::abs(a.red - b.red) <= kTolerance && std::abs(a.green - b.green) <= kTolerance &&
         std::abs(a.blue - b.blue) <= kTolerance;
}

// The colours as an expression of the filter geq.
std::string Channel(const char* upperLeft, const char* upperRight, const char* lowerLeft,
                    const char* lowerRight) {
  return "'if(gte(Y,H*7/8),if(lt(X,W*N/" + std::to_string(kVideoFrames) + "),255,0),if(lt(Y,H/2)," +
         "if(lt(X,W/2)," + upperLeft + "," + upperRight + "),if(lt(X,W/2)," + lowerLeft + "," +
         lowerRight + ")))'";
}

}  // namespace

bool MakeVideo(const std::string& path, const VideoOptions& options) {
  const std::string size = std::to_string(options.width) + "x" + std::to_string(options.height);
  const std::string picture =
      "color=s=80x60:r=25,format=gbrp,geq=r=" + Channel("255", "0", "0", "255") +
      ":g=" + Channel("0", "255", "0", "255") + ":b=" + Channel("0", "0", "255", "0") +
      ",scale=" + size + ":flags=neighbor,setsar=1," + options.filters;
  const std::string sound = options.sound ? " -f lavfi -i sine=r=48000 -ac 2" : "";
  const std::string command = "ffmpeg -hide_banner -loglevel error -y -f lavfi -i \"" + picture +
                              "\"" + sound + " -t 2 " + options.encoding + " '" + path +
                              "' < /dev/null";
  return std::system(command.c_str()) == 0;
}

Pixel PixelAt(Bitplate** plate, double x, double y) {
  const int column = static_cast<int>(x * bitplateGetWidth(plate));
  const int row = static_cast<int>(y * bitplateGetHeight(plate));
  const unsigned char* pixel =
      bitplateGetPixels(plate) + row * bitplateGetRowbytes(plate) + 4 * column;
  return {pixel[2], pixel[1], pixel[0], pixel[3]};
}

bool ShowsColours(Bitplate** plate, const Pixel& upperLeft, const Pixel& upperRight,
                  const Pixel& lowerLeft, const Pixel& lowerRight) {
  return plate != nullptr && IsNear(PixelAt(plate, 0.25, 0.25), upperLeft) &&
         IsNear(PixelAt(plate, 0.75, 0.25), upperRight) &&
         IsNear(PixelAt(plate, 0.25, 0.7), lowerLeft) &&
         IsNear(PixelAt(plate, 0.75, 0.7), lowerRight);
}

int FrameNumber(Bitplate** plate) {
  constexpr double kBar = 0.95;
  if (plate == nullptr || !IsNear(PixelAt(plate, 0.995, kBar), kBlack)) return -1;
  int white = 0;
  const int width = bitplateGetWidth(plate);
  for (int x = 0; x < width; ++x) {
    white += PixelAt(plate, (x + 0.5) / width, kBar).green > 127 ? 1 : 0;
  }
  return static_cast<int>(std::lround(static_cast<double>(kVideoFrames) * white / width));
}

}  // namespace sorvik_test
