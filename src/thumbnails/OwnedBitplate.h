// SPDX-License-Identifier: MIT
// Owns a pixel buffer inside the library until it is released to the caller.
#pragma once

#include <memory>

#include "SorvikProvider/foundation/Bitplate.h"
#include "foundation/imaging/Canvas.h"

namespace Sorvik {

struct DisposeBitplate {
  using pointer = Bitplate**;
  void operator()(Bitplate** plate) const noexcept { bitplateDispose(plate); }
};
using OwnedBitplate = std::unique_ptr<Bitplate*, DisposeBitplate>;

inline OwnedBitplate NewBitplate(int width, int height) {
  return OwnedBitplate(bitplateNew({0, 0, width, height}));
}

// Returns a view of the buffer to draw on, in its own row order.
inline imaging::Canvas CanvasOf(Bitplate** plate) {
  return {bitplateGetPixels(plate), static_cast<std::size_t>(bitplateGetRowbytes(plate)),
          bitplateGetWidth(plate), bitplateGetHeight(plate),
          bitplateGetRowOrder(plate) == BitplateRowOrder::kBottomUp};
}

}  // namespace Sorvik
