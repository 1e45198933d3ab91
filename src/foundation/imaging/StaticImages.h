// SPDX-License-Identifier: MIT
// The pictures that are built into the application, known by number, and the plain copying of
// pixels between buffers. Any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "SorvikProvider/foundation/Bitplate.h"

namespace Garrowby {

// Bytes blue, green, red, alpha, colours premultiplied. The one format that pictures come in.
enum PixelFormat { kPixelFormat_BGRA_4444_8u };

}  // namespace Garrowby

namespace Ilkmoor {

// A picture in memory; rows top-down without gaps.
struct FrameRecord {
  int width;
  int height;
  std::vector<std::uint8_t> pixels;
};
using Frame = std::shared_ptr<const FrameRecord>;

// A new buffer with the frame's pixels, owned by the caller; null for a null frame.
Bitplate** NewBitplateFromIlkmoorFrame(const Frame& frame);

}  // namespace Ilkmoor

namespace Fenwold::StaticImageFactory {

// The built-in picture `number` with its aspect kept, in the middle of a frame of `width` by
// `height` square pixels. There is one quality, the best. Null if there is no such picture or the
// sides are none that a buffer can have.
Ilkmoor::Frame LoadImageW(int number, int width, int height, Garrowby::PixelFormat format,
                          int quality);

}  // namespace Fenwold::StaticImageFactory

// Copies `height` rows of `width` pixels, the first `copiedBytes` bytes of each pixel. Both
// addresses are those of a first row; a negative distance of rows walks upwards from there.
void IR_Convert(const unsigned char* from, int fromRowBytes, int fromPixelBytes, unsigned char* to,
                int toRowBytes, int toPixelBytes, int width, int height, int copiedBytes);
