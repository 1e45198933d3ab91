// SPDX-License-Identifier: MIT
// A picture that is about to be drawn: its size is known, and its pixels come when they are needed.
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
  // Nothing if the source can't be read as an image. `source` must outlive the picture.
  static std::optional<Picture> Open(const imaging::ImageSource& source);

  int Width() const noexcept;
  int Height() const noexcept;
  // Without transparency in any pixel: such pictures are reduced by the box filter, others are
  // stretched.
  bool IsOpaque() const noexcept;

  // Draws the picture, once, into `place`. The canvas is clear before. False if the data turns out
  // to be damaged beyond use.
  bool Draw(const imaging::Canvas& canvas, const imaging::Placement& place);

 private:
  explicit Picture(imaging::JpegReader reader) noexcept : content_(std::move(reader)) {}
  explicit Picture(imaging::Image image) noexcept : content_(std::move(image)) {}

  std::variant<imaging::JpegReader, imaging::Image> content_;
};

}  // namespace Sorvik
