// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/Bitplate.h"

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

// The handle is the address of `self`.
struct Bitplate {
  Bitplate* self = this;
  int width;
  int height;
  BitplateRowOrder order = BitplateRowOrder::kTopDown;
  int locks = 0;
  std::unique_ptr<unsigned char[]> pixels;
};

namespace {

constexpr int kMaxSide = 16384;
constexpr int kBytesPerPixel = 4;

Bitplate* RecordOf(Bitplate** plate) noexcept { return plate == nullptr ? nullptr : *plate; }

}  // namespace

Bitplate** bitplateNew(const BitplateRect& bounds) noexcept {
  const long long width = static_cast<long long>(bounds.right) - bounds.left;
  const long long height = static_cast<long long>(bounds.bottom) - bounds.top;
  if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide) return nullptr;
  const auto size = static_cast<std::size_t>(width * height * kBytesPerPixel);
  std::unique_ptr<unsigned char[]> pixels(new (std::nothrow) unsigned char[size]());
  if (!pixels) return nullptr;
  auto* record = new (std::nothrow) Bitplate;
  if (record == nullptr) return nullptr;
  record->width = static_cast<int>(width);
  record->height = static_cast<int>(height);
  record->pixels = std::move(pixels);
  return &record->self;
}

void bitplateDispose(Bitplate** plate) noexcept { delete RecordOf(plate); }

int bitplateGetWidth(Bitplate** plate) noexcept {
  const Bitplate* record = RecordOf(plate);
  return record == nullptr ? 0 : record->width;
}

int bitplateGetHeight(Bitplate** plate) noexcept {
  const Bitplate* record = RecordOf(plate);
  return record == nullptr ? 0 : record->height;
}

int bitplateGetRowbytes(Bitplate** plate) noexcept {
  return bitplateGetWidth(plate) * kBytesPerPixel;
}

unsigned char* bitplateGetPixels(Bitplate** plate) noexcept {
  const Bitplate* record = RecordOf(plate);
  return record == nullptr ? nullptr : record->pixels.get();
}

void bitplateLockPixels(Bitplate** plate) noexcept {
  if (Bitplate* record = RecordOf(plate)) ++record->locks;
}

void bitplateUnlockPixels(Bitplate** plate) noexcept {
  if (Bitplate* record = RecordOf(plate)) --record->locks;
}

BitplateRowOrder bitplateGetRowOrder(Bitplate** plate) noexcept {
  const Bitplate* record = RecordOf(plate);
  return record == nullptr ? BitplateRowOrder::kTopDown : record->order;
}

void bitplateSetRowOrder(Bitplate** plate, BitplateRowOrder order) noexcept {
  if (Bitplate* record = RecordOf(plate)) record->order = order;
}
