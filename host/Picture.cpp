// SPDX-License-Identifier: MIT
#include "Picture.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <png.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>

#include "Failure.h"

namespace host {
namespace {

constexpr std::size_t kPixelBytes = 4;
constexpr std::uint8_t kOpaque = 255;
constexpr char kJpegQuality[] = "85";  // of 100

std::uint8_t Unpremultiply(std::uint8_t colour, unsigned alpha) {
  return static_cast<std::uint8_t>(std::min(255U, (colour * 255U + alpha / 2) / alpha));
}

// Divides the colours by alpha.
void CopyRow(std::span<const unsigned char> from, std::span<std::uint8_t> to) {
  for (std::size_t i = 0; i + 3 < from.size(); i += kPixelBytes) {
    const unsigned alpha = from[i + 3];
    for (std::size_t c = 0; c < 3; ++c) {
      to[i + c] = alpha == 0 ? std::uint8_t{0} : Unpremultiply(from[i + c], alpha);
    }
    to[i + 3] = from[i + 3];
  }
}

}  // namespace

Picture PictureFromBitplate(Bitplate** plate) {
  const std::unique_ptr<Bitplate*, void (*)(Bitplate**) noexcept> owned(plate, bitplateDispose);
  Picture picture{bitplateGetWidth(plate), bitplateGetHeight(plate), {}};
  const unsigned char* pixels = bitplateGetPixels(plate);
  if (pixels == nullptr || picture.width < 1 || picture.height < 1) return {};
  const auto rows = static_cast<std::size_t>(picture.height);
  const auto stride = static_cast<std::size_t>(bitplateGetRowbytes(plate));
  const std::size_t packed = static_cast<std::size_t>(picture.width) * kPixelBytes;
  const bool topDown = bitplateGetRowOrder(plate) == BitplateRowOrder::kTopDown;
  picture.pixels.resize(rows * packed);
  const std::span<const unsigned char> from(pixels, stride * (rows - 1) + packed);
  const std::span<std::uint8_t> to(picture.pixels);
  for (std::size_t row = 0; row < rows; ++row) {
    const std::size_t source = topDown ? row : rows - 1 - row;
    CopyRow(from.subspan(source * stride, packed), to.subspan(row * packed, packed));
  }
  return picture;
}

std::string EncodePng(const Picture& picture) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(picture.width);
  image.height = static_cast<png_uint_32>(picture.height);
  // Thumbnails are small; better compression would take longer than drawing them.
  image.flags = PNG_IMAGE_FLAG_FAST;
  image.format = PNG_FORMAT_BGRA;
  const auto write = [&](void* memory, png_alloc_size_t& size) {
    if (png_image_write_to_memory(&image, memory, &size, 0, picture.pixels.data(), 0, nullptr) == 0)
      throw Failure(kFailed, std::string("cannot encode the PNG picture (") + image.message + ")");
  };
  // This is an upper bound, so one pass is enough.
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  std::string bytes(size, '\0');
  write(bytes.data(), size);
  bytes.resize(size);
  return bytes;
}

bool IsOpaque(const Picture& picture) {
  for (std::size_t i = kPixelBytes - 1; i < picture.pixels.size(); i += kPixelBytes) {
    if (picture.pixels[i] != kOpaque) return false;
  }
  return !picture.Empty();
}

std::string EncodeJpeg(const Picture& picture) {
  const std::unique_ptr<GdkPixbuf, decltype(&g_object_unref)> pixbuf(
      gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, picture.width, picture.height), &g_object_unref);
  if (!pixbuf) throw Failure(kFailed, "cannot encode the JPEG picture (out of memory)");
  guchar* row = gdk_pixbuf_get_pixels(pixbuf.get());
  const std::uint8_t* from = picture.pixels.data();
  for (int y = 0; y < picture.height; ++y, row += gdk_pixbuf_get_rowstride(pixbuf.get())) {
    guchar* to = row;
    for (int x = 0; x < picture.width; ++x, from += kPixelBytes) {
      for (const int channel : {2, 1, 0}) *to++ = from[channel];
    }
  }
  gchar* bytes = nullptr;
  gsize size = 0;
  if (!gdk_pixbuf_save_to_buffer(pixbuf.get(), &bytes, &size, "jpeg", nullptr, "quality",
                                 kJpegQuality, nullptr)) {
    throw Failure(kFailed, "cannot encode the JPEG picture");
  }
  const std::unique_ptr<gchar, decltype(&g_free)> owned(bytes, &g_free);
  return std::string(bytes, size);
}

std::string Base64(const std::string& bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t held = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t group = 0;
    for (std::size_t j = 0; j < 3; ++j) {
      group = (group << 8) | (j < held ? static_cast<std::uint8_t>(bytes[i + j]) : 0U);
    }
    for (std::size_t j = 0; j < 4; ++j) {
      text += j <= held ? kDigits[(group >> (18 - 6 * j)) & 0x3F] : '=';
    }
  }
  return text;
}

}  // namespace host
