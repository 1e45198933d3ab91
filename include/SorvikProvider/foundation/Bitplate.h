// SPDX-License-Identifier: MIT
// Pixel buffers by handle. Pixels are 32 bits: blue, green, red, alpha, with premultiplied colours.
// The last receiver owns a handle and frees it with bitplateDispose. A handle must not be used by
// two threads at a time. All functions accept a null handle: its sizes are 0, setters are ignored.
#pragma once

#include <cstddef>

#include "SorvikProvider/foundation/Export.h"

struct Bitplate;

struct BitplateRect {
  int left;
  int top;
  int right;
  int bottom;
};

// The order of rows in memory.
enum class BitplateRowOrder { kTopDown, kBottomUp };

// Creates a zero-initialized buffer with top-down rows. Returns nullptr if a side is below 1 or
// above 16384, or if memory is exhausted.
SORVIK_EXPORT Bitplate** bitplateNew(const BitplateRect& bounds) noexcept;
// Frees the buffer, locked or not. Ignores nullptr.
SORVIK_EXPORT void bitplateDispose(Bitplate** plate) noexcept;

SORVIK_EXPORT int bitplateGetWidth(Bitplate** plate) noexcept;
SORVIK_EXPORT int bitplateGetHeight(Bitplate** plate) noexcept;
// The distance between rows in memory, in bytes; at least four times the width.
SORVIK_EXPORT int bitplateGetRowbytes(Bitplate** plate) noexcept;

// The first byte of the first row in memory. The address never changes; locks are counted, but
// restrict nothing.
SORVIK_EXPORT unsigned char* bitplateGetPixels(Bitplate** plate) noexcept;
SORVIK_EXPORT void bitplateLockPixels(Bitplate** plate) noexcept;
SORVIK_EXPORT void bitplateUnlockPixels(Bitplate** plate) noexcept;

// Set by the renderers. A host needs it to draw a picture upright.
SORVIK_EXPORT BitplateRowOrder bitplateGetRowOrder(Bitplate** plate) noexcept;
SORVIK_EXPORT void bitplateSetRowOrder(Bitplate** plate, BitplateRowOrder order) noexcept;
