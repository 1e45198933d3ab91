// SPDX-License-Identifier: MIT
// A picture to be drawn. Opening reads its size; JPEG pixels are decoded while drawing.
#pragma once

#include <optional>
#include <variant>

#include "foundation/imaging/Canvas.h"
#include "foundation/imaging/ImageDecoder.h"
#include "foundation/imaging/ImageSource.h"
#include "foundation/imaging/JpegReader.h"

namespace Sorvik {

class Picture {
 public:
  // Returns nullopt if the source can't be read as an image. `source` must outlive the picture.
  static std::optional<Picture> Open(const imaging::ImageSource& source);

  int Width() const noexcept;
  int Height() const noexcept;
  // True if no pixel is transparent. Opaque pictures are drawn by the box filter, others by the
  // smooth stretch.
  bool IsOpaque() const noexcept;

  // Draws the picture into `place` of a cleared canvas. May be called once. Returns false if the
  // data is too damaged to draw.
  bool Draw(const imaging::Canvas& canvas, const imaging::Placement& place);

 private:
  explicit Picture(imaging::JpegReader reader) noexcept : content_(std::move(reader)) {}
  explicit Picture(imaging::Image image) noexcept : content_(std::move(image)) {}

  std::variant<imaging::JpegReader, imaging::Image> content_;
};

}  // namespace Sorvik
