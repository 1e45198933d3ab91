// SPDX-License-Identifier: MIT
// Pixel buffers held by handle: 32-bit pixels, bytes blue, green, red, alpha, colours
// premultiplied. A handle belongs to whoever received it last and is given back with
// bitplateDispose. One handle belongs to one thread at a time; different handles may be used on
// different threads. A null handle has no pixels: its sizes are 0, and setting anything is ignored.
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

// In which order the rows of a picture stand in memory.
enum class BitplateRowOrder { kTopDown, kBottomUp };

// A new buffer, all bytes 0, rows top-down until said otherwise. Null if a side is below 1 or above
// 16384, or if memory is short.
SORVIK_EXPORT Bitplate** bitplateNew(const BitplateRect& bounds) noexcept;
// Frees the buffer in any state of locking; null is ignored.
SORVIK_EXPORT void bitplateDispose(Bitplate** plate) noexcept;

SORVIK_EXPORT int bitplateGetWidth(Bitplate** plate) noexcept;
SORVIK_EXPORT int bitplateGetHeight(Bitplate** plate) noexcept;
// Distance from one row in memory to the next, in bytes; at least four times the width.
SORVIK_EXPORT int bitplateGetRowbytes(Bitplate** plate) noexcept;

// The first byte of the first row in memory. Locking is a count that restricts nothing: the address
// never changes while the buffer lives.
SORVIK_EXPORT unsigned char* bitplateGetPixels(Bitplate** plate) noexcept;
SORVIK_EXPORT void bitplateLockPixels(Bitplate** plate) noexcept;
SORVIK_EXPORT void bitplateUnlockPixels(Bitplate** plate) noexcept;

// The renderers set the order, so that a host can draw every picture upright.
SORVIK_EXPORT BitplateRowOrder bitplateGetRowOrder(Bitplate** plate) noexcept;
SORVIK_EXPORT void bitplateSetRowOrder(Bitplate** plate, BitplateRowOrder order) noexcept;
