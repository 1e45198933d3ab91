// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/imaging/ImageSource.h"
#include "thumbnails/OwnedBitplate.h"
#include "thumbnails/Picture.h"
#include "thumbnails/PictureFit.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

using imaging::Canvas;
using imaging::ImageSource;
using imaging::Placement;

// Clears the pixels. Padding between rows belongs to the caller and is not written.
void Clear(const Canvas& canvas) {
  for (int y = 0; y < canvas.height; ++y) std::ranges::fill(canvas.Row(y), std::uint8_t{0});
}

}  // namespace

bool RenderThumbnail(const UTF16String& path, int width, int height, int rowBytes,
                     unsigned char* pixels) {
  if (pixels == nullptr || width < 1 || height < 1 || rowBytes / 4 < width) return false;
  const auto source = ImageSource::OpenFile(Hestra::MakeStdString(path));
  if (!source) return false;
  auto picture = Picture::Open(*source);
  if (!picture) return false;
  const Canvas canvas{pixels, static_cast<std::size_t>(rowBytes), width, height};
  Clear(canvas);
  const Placement place = FitPicture(picture->Width(), picture->Height(), width, height);
  if (!picture->Draw(canvas, place)) return false;
  return picture->IsOpaque() || (place.width > 0 && place.height > 0);
}

Bitplate** RenderThumbnail(const UTF16String& path, int width, int height) {
  const auto source = ImageSource::OpenFile(Hestra::MakeStdString(path));
  if (!source) return nullptr;
  auto picture = Picture::Open(*source);
  if (!picture) return nullptr;
  OwnedBitplate plate =
      NewBitplate(width == 0 ? picture->Width() : width, height == 0 ? picture->Height() : height);
  if (!plate) return nullptr;
  // The smooth stretch writes bottom-up rows, the box filter top-down rows.
  const bool bottomUp = !picture->IsOpaque();
  bitplateSetRowOrder(plate.get(),
                      bottomUp ? BitplateRowOrder::kBottomUp : BitplateRowOrder::kTopDown);
  bitplateLockPixels(plate.get());
  const Canvas canvas = CanvasOf(plate.get());
  const Placement place =
      FitPicture(picture->Width(), picture->Height(), canvas.width, canvas.height);
  if (!picture->Draw(canvas, place)) return nullptr;
  return plate.release();
}

Bitplate** RenderThumbnail(const std::vector<unsigned char>&, int, int) { return nullptr; }

Bitplate** RenderThumbnailIntoNew(const UTF16String& path, int width, int height) {
  OwnedBitplate plate = NewBitplate(width, height);
  if (!plate) return nullptr;
  bitplateLockPixels(plate.get());
  const bool drawn = RenderThumbnail(path, width, height, bitplateGetRowbytes(plate.get()),
                                     bitplateGetPixels(plate.get()));
  bitplateUnlockPixels(plate.get());
  return drawn ? plate.release() : nullptr;
}

}  // namespace Sorvik
