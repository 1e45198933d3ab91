// SPDX-License-Identifier: MIT
// Decodes images with gdk-pixbuf, BMP, PNG, JPEG, GIF (its first frame) and ICO (its largest
// picture), or with libtiff. Input is untrusted: the format is detected by the first bytes only,
// and sizes are checked before memory is allocated. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "foundation/imaging/ImageSource.h"

typedef struct _GdkPixbuf GdkPixbuf;

namespace Sorvik::imaging {

// Larger images are rejected before memory is allocated.
inline constexpr std::int64_t kMaxPixels = 100'000'000;

enum class ImageType { kBmp, kPng, kJpeg, kTiff, kGif, kIco };

// Detects the format by the first bytes. Returns nullopt if it is unknown.
std::optional<ImageType> SniffImageType(const ImageSource& source);

// A decoded picture. Rows are top-down; a pixel is red, green, blue and, with four channels, alpha.
// The colours of a picture with transparency are premultiplied.
class Image {
 public:
  int Width() const noexcept { return width_; }
  int Height() const noexcept { return height_; }
  // Bytes of a pixel: 3 or 4.
  int Channels() const noexcept { return channels_; }
  // True if no pixel is transparent. A fourth channel then has no meaning.
  bool IsOpaque() const noexcept { return opaque_; }
  // The bytes of one row.
  std::span<const std::uint8_t> Row(int y) const noexcept;

  // Takes ownership of a decoded picture. kIgnored makes it opaque regardless of a fourth channel;
  // straight colours of a picture with transparency are premultiplied in place.
  enum class Alpha { kStraight, kPremultiplied, kIgnored };
  struct Release {
    void operator()(GdkPixbuf* pixbuf) const noexcept;
  };
  using Pixbuf = std::unique_ptr<GdkPixbuf, Release>;
  Image(Pixbuf pixbuf, Alpha alpha);

 private:
  Pixbuf pixbuf_;
  std::uint8_t* pixels_;
  std::size_t rowBytes_;
  int width_;
  int height_;
  int channels_;
  bool opaque_ = true;
};

// Returns nullopt if the format is unknown, the file is damaged or the image is too large.
std::optional<Image> DecodeImage(const ImageSource& source);

// Renders an SVG icon at `side` pixels. Returns nullopt if no SVG decoder is installed.
std::optional<Image> DecodeSvgIcon(const ImageSource& source, int side);

}  // namespace Sorvik::imaging
