// SPDX-License-Identifier: MIT
// Image files for tests, from encoders that share no code with the product: written by hand, by
// gdk-pixbuf or by libjpeg.
#pragma once

#include <array>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/foundation/Bitplate.h"

namespace sorvik_test {

struct Pixel {
  int red = 0;
  int green = 0;
  int blue = 0;
  int alpha = 255;
  bool operator==(const Pixel&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const Pixel& pixel);

inline constexpr Pixel kClear{0, 0, 0, 0};
inline constexpr Pixel kRed{255, 0, 0};
inline constexpr Pixel kGreen{0, 255, 0};
inline constexpr Pixel kBlue{0, 0, 255};
inline constexpr Pixel kWhite{255, 255, 255};
inline constexpr Pixel kBlack{0, 0, 0};
inline constexpr Pixel kYellow{255, 255, 0};

// Rows from the top, not premultiplied.
struct Drawing {
  int width;
  int height;
  std::vector<Pixel> pixels;
  const Pixel& At(int x, int y) const { return pixels[static_cast<std::size_t>(y * width + x)]; }
};

// 2 by 3 pixels of six colours, which show any mirroring or shift.
Drawing SixColours();
// A picture of one colour.
Drawing Plain(int width, int height, const Pixel& pixel);
// Smooth gradients, which lossy formats preserve.
Drawing Ramps(int width, int height);

// Numbers as bytes, little-endian (LE) or big-endian (BE).
std::string LE16(std::uint32_t value);
std::string LE32(std::uint32_t value);
std::string BE32(std::uint32_t value);

// A file as gdk-pixbuf saves it: type "png", "jpeg", "tiff", "bmp" or "ico".
std::string Saved(const Drawing& drawing, const char* type, bool withAlpha = false);

enum class JpegKind { kColour, kGrey, kProgressive, kCmyk, kFullChroma };
std::string Jpeg(const Drawing& drawing, JpegKind kind);

// A BMP file from its parts. `data` is the pixel data as stored in the file.
struct BmpParts {
  std::uint32_t headerBytes = 40;
  std::int32_t width = 2;
  std::int32_t height = 3;  // negative: rows from the top
  int bits = 24;
  std::uint32_t compression = 0;
  std::vector<Pixel> palette = {};
  std::array<std::uint32_t, 4> masks = {};  // red, green, blue, alpha
  std::string data = {};
};
std::string Bmp(const BmpParts& parts);

// A PNG file of these chunks with valid checksums.
struct PngChunk {
  std::string type;
  std::string data;
};
std::string Png(const std::vector<PngChunk>& chunks);
std::string PngHead(std::uint32_t width, std::uint32_t height, char depth, char colourType);

// A GIF of SixColours with literal LZW codes only.
std::string SixColourGif();

// An ICO file with these encoded pictures; a `side` of 0 means 256.
struct IcoPart {
  std::uint8_t side;
  std::string bytes;
};
std::string Ico(const std::vector<IcoPart>& parts);

// The pixel at a position in the upright picture, for either row order.
Pixel PixelOf(Bitplate** plate, int x, int y);
// All pixels of the upright picture.
Drawing Upright(Bitplate** plate);

// Decodes an image file with gdk-pixbuf, without premultiplication.
Drawing DecodeByPixbuf(const std::string& bytes);

}  // namespace sorvik_test
