// SPDX-License-Identifier: MIT
#include "thumbnails/PlainPicture.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "thumbnails/Picture.h"
#include "thumbnails/PictureFit.h"

namespace Sorvik {
namespace {

int LimitOf(int side) { return side < 1 ? frames::kMaxSide : std::min(side, frames::kMaxSide); }

// The size of a reduced picture, at the place (0, 0).
imaging::Placement FitWithin(int width, int height, int maxWidth, int maxHeight) {
  if (width <= maxWidth && height <= maxHeight) return {0, 0, width, height};
  const imaging::Placement fitted = FitPicture(width, height, maxWidth, maxHeight);
  return {0, 0, std::max(fitted.width, 1), std::max(fitted.height, 1)};
}

// The orientations of Exif from kTransposed on exchange the sides.
constexpr int kTransposed = 5;

struct Point {
  int x;
  int y;
};

// The place in a stored picture of `width` by `height` of what is shown at `shown`.
Point StoredPlace(Point shown, int width, int height, int orientation) {
  const auto [x, y] = orientation >= kTransposed ? Point{shown.y, shown.x} : shown;
  const int right = width - 1 - x;
  const int bottom = height - 1 - y;
  switch (orientation) {
    case 2:
    case 8:
      return {right, y};
    case 3:
    case 7:
      return {right, bottom};
    case 4:
    case 6:
      return {x, bottom};
    default:
      return {x, y};
  }
}

OwnedBitplate Upright(OwnedBitplate stored, int orientation) {
  const imaging::Canvas from = CanvasOf(stored.get());
  const bool transposed = orientation >= kTransposed;
  OwnedBitplate plate =
      NewBitplate(transposed ? from.height : from.width, transposed ? from.width : from.height);
  if (!plate) return nullptr;
  const imaging::Canvas to = CanvasOf(plate.get());
  for (int y = 0; y < to.height; ++y) {
    const auto row = to.Row(y);
    for (int x = 0; x < to.width; ++x) {
      const Point place = StoredPlace({x, y}, from.width, from.height, orientation);
      const auto pixel = from.Row(place.y).subspan(static_cast<std::size_t>(place.x) * 4, 4);
      std::ranges::copy(pixel, row.begin() + std::ptrdiff_t{4} * x);
    }
  }
  return plate;
}

}  // namespace

OwnedBitplate DrawPlainPicture(const imaging::ImageSource& source, int maxWidth, int maxHeight,
                               int orientation) {
  auto picture = Picture::Open(source);
  if (!picture || picture->Width() < 1 || picture->Height() < 1) return nullptr;
  if (orientation >= kTransposed) std::swap(maxWidth, maxHeight);
  const imaging::Placement place =
      FitWithin(picture->Width(), picture->Height(), LimitOf(maxWidth), LimitOf(maxHeight));
  OwnedBitplate plate = NewBitplate(place.width, place.height);
  if (!plate || !picture->Draw(CanvasOf(plate.get()), place)) return nullptr;
  return orientation == 1 ? std::move(plate) : Upright(std::move(plate), orientation);
}

OwnedBitplate DrawFramePicture(const FramePicture& picture) {
  OwnedBitplate plate = NewBitplate(picture.width, picture.height);
  if (!plate) return nullptr;
  const imaging::Canvas canvas = CanvasOf(plate.get());
  const std::uint8_t* pixel = picture.pixels.data();
  for (int y = 0; y < picture.height; ++y) {
    const auto row = canvas.Row(y);
    for (std::size_t x = 0; x < row.size();
         x += imaging::kBGRA.bytes, pixel += frames::kPixelBytes) {
      row[x] = pixel[2];
      row[x + 1] = pixel[1];
      row[x + 2] = pixel[0];
      row[x + 3] = 0xFF;
    }
  }
  return plate;
}

}  // namespace Sorvik
