// SPDX-License-Identifier: MIT
// Image files for tests, made by encoders that share no code with the product: by hand, by
// gdk-pixbuf's savers and by libjpeg's compressor.
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

// 2 by 3 pixels of six colours: any mirroring or shift shows.
Drawing SixColours();
// One colour all over.
Drawing Plain(int width, int height, const Pixel& pixel);
// Smooth ramps of all three channels, so that lossy formats keep it.
Drawing Ramps(int width, int height);

// Numbers as bytes, least significant first.
std::string LE16(std::uint32_t value);
std::string LE32(std::uint32_t value);
std::string BE32(std::uint32_t value);

// A file as gdk-pixbuf saves it: type "png", "jpeg", "tiff", "bmp" or "ico".
std::string Saved(const Drawing& drawing, const char* type, bool withAlpha = false);

enum class JpegKind { kColour, kGrey, kProgressive, kCmyk, kFullChroma };
std::string Jpeg(const Drawing& drawing, JpegKind kind);

// A BMP of given parts. The bits of rows are given as they stand in the file.
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

// A PNG file of chunks whose checksums are right.
struct PngChunk {
  std::string type;
  std::string data;
};
std::string Png(const std::vector<PngChunk>& chunks);
std::string PngHead(std::uint32_t width, std::uint32_t height, char depth, char colourType);

// A GIF of SixColours, uncompressed within the format's rules.
std::string SixColourGif();

// An ICO file around ready pictures; `side` 0 stands for 256.
struct IcoPart {
  std::uint8_t side;
  std::string bytes;
};
std::string Ico(const std::vector<IcoPart>& parts);

// The pixel of a buffer as it is to be seen, whatever its order of rows.
Pixel PixelOf(Bitplate** plate, int x, int y);
// All of them.
Drawing Upright(Bitplate** plate);

// An image file as gdk-pixbuf itself reads it, with colours as they stand in the file.
Drawing DecodeByPixbuf(const std::string& bytes);

}  // namespace sorvik_test
