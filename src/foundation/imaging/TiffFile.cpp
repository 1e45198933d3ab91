// SPDX-License-Identifier: MIT
#include "foundation/imaging/TiffFile.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <tiffio.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <vector>

namespace Sorvik::imaging {
namespace {

// Limits the memory for the strips, tiles and tables of a malformed file.
constexpr tmsize_t kMaxAllocation = tmsize_t{512} << 20;

// The file in memory, and the position in it for the library's file procedures.
struct MappedFile {
  std::vector<std::byte> bytes;
  std::uint64_t at = 0;
};
MappedFile& FileOf(thandle_t handle) { return *static_cast<MappedFile*>(handle); }

tmsize_t Read(thandle_t handle, void* into, tmsize_t count) {
  MappedFile& file = FileOf(handle);
  if (count <= 0 || file.at >= file.bytes.size()) return 0;
  const auto available = std::span(file.bytes).subspan(static_cast<std::size_t>(file.at));
  const auto part = available.first(std::min(available.size(), static_cast<std::size_t>(count)));
  std::copy(part.begin(), part.end(), static_cast<std::byte*>(into));
  file.at += part.size();
  return static_cast<tmsize_t>(part.size());
}

tmsize_t Write(thandle_t, void*, tmsize_t) { return 0; }

// Positions past the end are allowed, as in files.
toff_t Seek(thandle_t handle, toff_t offset, int from) {
  MappedFile& file = FileOf(handle);
  std::uint64_t base = 0;
  if (from == SEEK_CUR) base = file.at;
  if (from == SEEK_END) base = file.bytes.size();
  return file.at = base + offset;
}

int Close(thandle_t) { return 0; }
toff_t Size(thandle_t handle) { return FileOf(handle).bytes.size(); }

int Map(thandle_t handle, void** base, toff_t* size) {
  *base = FileOf(handle).bytes.data();
  *size = Size(handle);
  return 1;
}
void Unmap(thandle_t, void*, toff_t) {}

// Suppresses messages, which the library would print to stderr.
int OnMessage(TIFF*, void*, const char*, const char*, va_list) { return 1; }

struct FreeOptions {
  void operator()(TIFFOpenOptions* options) const noexcept { TIFFOpenOptionsFree(options); }
};
struct CloseTiff {
  void operator()(TIFF* tiff) const noexcept { TIFFClose(tiff); }
};
using OpenTiff = std::unique_ptr<TIFF, CloseTiff>;

OpenTiff Open(MappedFile& file) {
  const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
  if (!options) return nullptr;
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMaxAllocation);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), OnMessage, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), OnMessage, nullptr);
  return OpenTiff(TIFFClientOpenExt("image", "r", &file, Read, Write, Seek, Close, Size, Map, Unmap,
                                    options.get()));
}

// The library gives pixels as numbers with red in the lowest byte.
void OrderBytes(std::span<std::uint32_t> pixels) {
  if constexpr (std::endian::native == std::endian::little) return;
  for (std::uint32_t& pixel : pixels) {
    pixel = pixel << 24 | (pixel & 0xFF00) << 8 | (pixel >> 8 & 0xFF00) | pixel >> 24;
  }
}

}  // namespace

Image::Pixbuf DecodeTiff(const ImageSource& source) {
  MappedFile file{std::vector<std::byte>(static_cast<std::size_t>(source.Size()))};
  file.bytes.resize(source.ReadAt(0, file.bytes));
  const OpenTiff tiff = Open(file);
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  if (!tiff || TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width) == 0 ||
      TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height) == 0) {
    return nullptr;
  }
  if (width == 0 || height == 0 || std::int64_t{width} > kMaxPixels / height) return nullptr;
  const auto pixels = std::uint64_t{width} * height;
  Image::Pixbuf pixbuf(gdk_pixbuf_new(GDK_COLORSPACE_RGB, TRUE, 8, static_cast<int>(width),
                                      static_cast<int>(height)));
  if (!pixbuf) return nullptr;
  // Rows of four-byte pixels have no padding.
  auto* raster = reinterpret_cast<std::uint32_t*>(gdk_pixbuf_get_pixels(pixbuf.get()));
  constexpr int kStopOnError = 1;
  if (TIFFReadRGBAImageOriented(tiff.get(), width, height, raster, ORIENTATION_TOPLEFT,
                                kStopOnError) == 0) {
    return nullptr;
  }
  OrderBytes({raster, static_cast<std::size_t>(pixels)});
  return pixbuf;
}

}  // namespace Sorvik::imaging
