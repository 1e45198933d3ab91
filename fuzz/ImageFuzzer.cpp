// SPDX-License-Identifier: MIT
// Decodes and draws an image from memory. Drawing never writes outside the cell, and no pixel's
// colours exceed its alpha.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "foundation/imaging/ImageSource.h"
#include "thumbnails/Picture.h"
#include "thumbnails/PictureFit.h"

namespace {

constexpr int kWidth = 37;
constexpr int kHeight = 23;
constexpr int kRowBytes = kWidth * 4 + 4;
constexpr unsigned char kGuard = 0xA5;

void Check(bool holds) {
  if (!holds) std::abort();
}

void DrawAndCheck(Sorvik::Picture& picture, bool bottomUp) {
  std::vector<unsigned char> cell(kRowBytes * kHeight);
  for (std::size_t row = 0; row < kHeight; ++row) cell[row * kRowBytes + kWidth * 4] = kGuard;
  const Sorvik::imaging::Canvas canvas{cell.data(), kRowBytes, kWidth, kHeight, bottomUp};
  const auto place = Sorvik::FitPicture(picture.Width(), picture.Height(), kWidth, kHeight);
  Check(place.x + place.width <= kWidth && place.y + place.height <= kHeight);
  picture.Draw(canvas, place);
  for (std::size_t row = 0; row < kHeight; ++row) {
    const auto bytes = std::span(cell).subspan(row * kRowBytes, kRowBytes);
    Check(bytes[kWidth * 4] == kGuard);
    for (std::size_t i = 0; i < kWidth * 4; ++i) Check(bytes[i] <= bytes[i / 4 * 4 + 3]);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Sorvik::imaging::ImageSource source(std::as_bytes(std::span(data, size)));
  auto picture = Sorvik::Picture::Open(source);
  if (!picture) return 0;
  // Large pictures only cost time here; the size limit has separate tests.
  constexpr std::int64_t kMaxPixels = 1 << 22;
  if (std::int64_t{picture->Width()} * picture->Height() > kMaxPixels) return 0;
  DrawAndCheck(*picture, size % 2 == 0);
  return 0;
}
