// SPDX-License-Identifier: MIT
// Encoded images as pixels in memory, decoded by gdk-pixbuf: BMP, PNG, JPEG, TIFF, GIF (its first
// frame) and ICO (its largest picture). Files may be hostile: the kind is told by the first bytes
// alone, and sizes are looked at before memory is taken. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "foundation/imaging/ImageSource.h"

typedef struct _GdkPixbuf GdkPixbuf;

namespace Sorvik::imaging {

// Images of more pixels are refused before memory is taken for them.
inline constexpr std::int64_t kMaxPixels = 100'000'000;

enum class ImageType { kBmp, kPng, kJpeg, kTiff, kGif, kIco };

// The kind of image that the first bytes announce.
std::optional<ImageType> SniffImageType(const ImageSource& source);

// A decoded picture. Rows stand top-down; a pixel is red, green, blue and, with four channels,
// alpha. The colours of a picture with transparency are premultiplied.
class Image {
 public:
  int Width() const noexcept { return width_; }
  int Height() const noexcept { return height_; }
  // Bytes of a pixel: 3 or 4.
  int Channels() const noexcept { return channels_; }
  // True if no pixel is transparent in any degree; a fourth channel then means nothing.
  bool IsOpaque() const noexcept { return opaque_; }
  // The bytes of one row.
  std::span<const std::uint8_t> Row(int y) const noexcept;

  // Takes a finished picture over. `ignoreAlpha` makes it opaque whatever its fourth channel holds;
  // otherwise transparency is looked for, and premultiplied in place.
  struct Release {
    void operator()(GdkPixbuf* pixbuf) const noexcept;
  };
  using Pixbuf = std::unique_ptr<GdkPixbuf, Release>;
  Image(Pixbuf pixbuf, bool ignoreAlpha);

 private:
  Pixbuf pixbuf_;
  std::uint8_t* pixels_;
  std::size_t rowBytes_;
  int width_;
  int height_;
  int channels_;
  bool opaque_ = true;
};

// Nothing if the source is none of the formats above, is damaged beyond use, or is too large.
std::optional<Image> DecodeImage(const ImageSource& source);

// A drawing of the system's icon theme at `side` pixels; nothing where no SVG decoder is installed.
std::optional<Image> DecodeSvgIcon(const ImageSource& source, int side);

}  // namespace Sorvik::imaging
