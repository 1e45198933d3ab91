// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/Bitplate.h"

#include <memory>
#include <new>

// The handle is the address of the first member of a record that owns everything.
struct Bitplate {
  int width;
  int height;
  BitplateRowOrder order = BitplateRowOrder::kTopDown;
  int locks = 0;
  std::unique_ptr<unsigned char[]> pixels;
};

namespace {

constexpr int kLargestSide = 16384;
constexpr int kBytesPerPixel = 4;

struct Handle {
  Bitplate* plate;
  Bitplate record;
};

}  // namespace

Bitplate** bitplateNew(const BitplateRect& bounds) noexcept {
  const long long width = static_cast<long long>(bounds.right) - bounds.left;
  const long long height = static_cast<long long>(bounds.bottom) - bounds.top;
  if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide) return nullptr;
  const auto size = static_cast<std::size_t>(width * height * kBytesPerPixel);
  std::unique_ptr<unsigned char[]> pixels(new (std::nothrow) unsigned char[size]());
  auto* handle = new (std::nothrow) Handle;
  if (!pixels || handle == nullptr) {
    delete handle;
    return nullptr;
  }
  handle->record.width = static_cast<int>(width);
  handle->record.height = static_cast<int>(height);
  handle->record.pixels = std::move(pixels);
  handle->plate = &handle->record;
  return &handle->plate;
}

void bitplateDispose(Bitplate** plate) noexcept {
  // A handle is the first member of its Handle, so both have one address.
  delete reinterpret_cast<Handle*>(plate);
}

int bitplateGetWidth(Bitplate** plate) noexcept { return (*plate)->width; }

int bitplateGetHeight(Bitplate** plate) noexcept { return (*plate)->height; }

int bitplateGetRowbytes(Bitplate** plate) noexcept { return (*plate)->width * kBytesPerPixel; }

unsigned char* bitplateGetPixels(Bitplate** plate) noexcept { return (*plate)->pixels.get(); }

void bitplateLockPixels(Bitplate** plate) noexcept { ++(*plate)->locks; }

void bitplateUnlockPixels(Bitplate** plate) noexcept { --(*plate)->locks; }

BitplateRowOrder bitplateGetRowOrder(Bitplate** plate) noexcept { return (*plate)->order; }

void bitplateSetRowOrder(Bitplate** plate, BitplateRowOrder order) noexcept {
  (*plate)->order = order;
}
