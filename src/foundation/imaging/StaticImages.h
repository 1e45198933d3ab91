// SPDX-License-Identifier: MIT
// The application's built-in pictures, identified by number, and copying of pixels. Any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "SorvikProvider/foundation/Bitplate.h"

namespace Garrowby {

// Blue, green, red, alpha with premultiplied colours. The only pixel format.
enum PixelFormat { kPixelFormat_BGRA_4444_8u };

}  // namespace Garrowby

namespace Ilkmoor {

// A picture in memory; rows are top-down without padding.
struct FrameRecord {
  int width;
  int height;
  std::vector<std::uint8_t> pixels;
};
using Frame = std::shared_ptr<const FrameRecord>;

// Returns a new buffer with the frame's pixels, owned by the caller; nullptr for a null frame.
Bitplate** NewBitplateFromIlkmoorFrame(const Frame& frame);

}  // namespace Ilkmoor

namespace Fenwold::StaticImageFactory {

// Returns the built-in picture `number`, scaled with its aspect ratio and centred in a frame of
// `width` by `height` square pixels. `quality` is ignored. Returns null if there is no such picture
// or a side is out of the range of a Bitplate.
Ilkmoor::Frame LoadImageW(int number, int width, int height, Garrowby::PixelFormat format,
                          int quality);

}  // namespace Fenwold::StaticImageFactory

// Copies `height` rows of `width` pixels, the first `copiedBytes` bytes of each pixel. `from` and
// `to` are the first rows; row distances may be negative.
void IR_Convert(const unsigned char* from, int fromRowBytes, int fromPixelBytes, unsigned char* to,
                int toRowBytes, int toPixelBytes, int width, int height, int copiedBytes);
