// SPDX-License-Identifier: MIT
#include "support/ImageFiles.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
// jpeglib.h needs the types of cstdio.
#include <jpeglib.h>

namespace sorvik_test {
namespace {

char Byte(std::uint32_t value) { return static_cast<char>(value & 0xFF); }

std::uint32_t Crc(std::string_view bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const char byte : bytes) {
    crc ^= static_cast<unsigned char>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320u : 0u);
  }
  return ~crc;
}

// One row as the compressor takes it.
std::vector<JSAMPLE> JpegRow(const Drawing& drawing, int y, JpegKind kind) {
  std::vector<JSAMPLE> row;
  for (int x = 0; x < drawing.width; ++x) {
    const Pixel& pixel = drawing.At(x, y);
    if (kind == JpegKind::kGrey) {
      row.push_back(static_cast<JSAMPLE>(pixel.green));
      continue;
    }
    for (const int colour : {pixel.red, pixel.green, pixel.blue}) {
      row.push_back(static_cast<JSAMPLE>(colour));
    }
    // Ink stored inverted, without black.
    if (kind == JpegKind::kCmyk) row.push_back(255);
  }
  return row;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Pixel& pixel) {
  return stream << "(" << pixel.red << "," << pixel.green << "," << pixel.blue << "," << pixel.alpha
                << ")";
}

Drawing SixColours() { return {2, 3, {kRed, kGreen, kBlue, kWhite, kBlack, kYellow}}; }

Drawing Plain(int width, int height, const Pixel& pixel) {
  return {width, height,
          std::vector<Pixel>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                             pixel)};
}

Drawing Ramps(int width, int height) {
  Drawing drawing{width, height, {}};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      drawing.pixels.push_back(
          {x * 255 / width, y * 255 / height, (x + y) * 127 / (width + height)});
    }
  }
  return drawing;
}

std::string LE16(std::uint32_t value) { return {Byte(value), Byte(value >> 8)}; }

std::string LE32(std::uint32_t value) { return LE16(value) + LE16(value >> 16); }

std::string BE32(std::uint32_t value) {
  return {Byte(value >> 24), Byte(value >> 16), Byte(value >> 8), Byte(value)};
}

std::string Saved(const Drawing& drawing, const char* type, bool withAlpha) {
  GdkPixbuf* pixbuf =
      gdk_pixbuf_new(GDK_COLORSPACE_RGB, withAlpha, 8, drawing.width, drawing.height);
  const int channels = withAlpha ? 4 : 3;
  for (int y = 0; y < drawing.height; ++y) {
    guchar* row = gdk_pixbuf_get_pixels(pixbuf) + y * gdk_pixbuf_get_rowstride(pixbuf);
    for (int x = 0; x < drawing.width; ++x, row += channels) {
      const Pixel& pixel = drawing.At(x, y);
      row[0] = static_cast<guchar>(pixel.red);
      row[1] = static_cast<guchar>(pixel.green);
      row[2] = static_cast<guchar>(pixel.blue);
      if (withAlpha) row[3] = static_cast<guchar>(pixel.alpha);
    }
  }
  gchar* bytes = nullptr;
  gsize size = 0;
  const bool saved =
      gdk_pixbuf_save_to_buffer(pixbuf, &bytes, &size, type, nullptr, nullptr) != FALSE;
  g_object_unref(pixbuf);
  if (!saved) throw std::runtime_error(std::string("cannot save ") + type);
  const std::string result(bytes, size);
  g_free(bytes);
  return result;
}

std::string Jpeg(const Drawing& drawing, JpegKind kind) {
  jpeg_compress_struct encoder;
  jpeg_error_mgr errors;
  encoder.err = jpeg_std_error(&errors);
  jpeg_create_compress(&encoder);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&encoder, &bytes, &size);
  encoder.image_width = static_cast<JDIMENSION>(drawing.width);
  encoder.image_height = static_cast<JDIMENSION>(drawing.height);
  const bool isCmyk = kind == JpegKind::kCmyk;
  const bool isGrey = kind == JpegKind::kGrey;
  encoder.input_components = isCmyk ? 4 : isGrey ? 1 : 3;
  encoder.in_color_space = isCmyk ? JCS_CMYK : isGrey ? JCS_GRAYSCALE : JCS_RGB;
  jpeg_set_defaults(&encoder);
  jpeg_set_quality(&encoder, 95, TRUE);
  if (isCmyk) encoder.write_Adobe_marker = TRUE;
  if (kind == JpegKind::kProgressive) jpeg_simple_progression(&encoder);
  if (kind == JpegKind::kFullChroma) encoder.comp_info[0].h_samp_factor = 1;
  if (kind == JpegKind::kFullChroma) encoder.comp_info[0].v_samp_factor = 1;
  jpeg_start_compress(&encoder, TRUE);
  for (int y = 0; y < drawing.height; ++y) {
    auto row = JpegRow(drawing, y, kind);
    JSAMPROW address = row.data();
    jpeg_write_scanlines(&encoder, &address, 1);
  }
  jpeg_finish_compress(&encoder);
  jpeg_destroy_compress(&encoder);
  const std::string result(reinterpret_cast<const char*>(bytes), size);
  std::free(bytes);
  return result;
}

std::string Bmp(const BmpParts& parts) {
  std::string header;
  if (parts.headerBytes == 12) {
    header = LE32(12) + LE16(static_cast<std::uint32_t>(parts.width)) +
             LE16(static_cast<std::uint32_t>(parts.height)) + LE16(1) +
             LE16(static_cast<std::uint32_t>(parts.bits));
  } else {
    header = LE32(parts.headerBytes) + LE32(static_cast<std::uint32_t>(parts.width)) +
             LE32(static_cast<std::uint32_t>(parts.height)) + LE16(1) +
             LE16(static_cast<std::uint32_t>(parts.bits)) + LE32(parts.compression) +
             LE32(static_cast<std::uint32_t>(parts.data.size())) + LE32(2835) + LE32(2835) +
             LE32(static_cast<std::uint32_t>(parts.palette.size())) + LE32(0);
    const bool hasMasks = parts.compression == 3;
    for (std::size_t i = 0; i < 4; ++i) {
      const bool written = parts.headerBytes > 40 || (hasMasks && i < 3);
      if (written) header += LE32(parts.masks[i]);
    }
    if (header.size() < parts.headerBytes) header.resize(parts.headerBytes);
  }
  for (const Pixel& colour : parts.palette) {
    header += {Byte(static_cast<std::uint32_t>(colour.blue)),
               Byte(static_cast<std::uint32_t>(colour.green)),
               Byte(static_cast<std::uint32_t>(colour.red))};
    if (parts.headerBytes != 12) header += '\0';
  }
  const auto offset = static_cast<std::uint32_t>(14 + header.size());
  return "BM" + LE32(offset + static_cast<std::uint32_t>(parts.data.size())) + LE32(0) +
         LE32(offset) + header + parts.data;
}

std::string Png(const std::vector<PngChunk>& chunks) {
  std::string file = "\x89PNG\r\n\x1A\n";
  for (const auto& [type, data] : chunks) {
    const std::string body = type + data;
    file += BE32(static_cast<std::uint32_t>(data.size())) + body + BE32(Crc(body));
  }
  return file;
}

std::string PngHead(std::uint32_t width, std::uint32_t height, char depth, char colourType) {
  return BE32(width) + BE32(height) + std::string{depth, colourType, '\0', '\0', '\0'};
}

std::string SixColourGif() {
  // Codes of 4 bits: 8 clears the table, 9 ends. With a clear before every pixel they stay 4 wide.
  std::string codes;
  for (const int colour : {0, 1, 2, 3, 4, 5}) codes += static_cast<char>(8 | (colour << 4));
  codes += '\x09';
  std::string palette("\xFF\0\0\0\xFF\0\0\0\xFF\xFF\xFF\xFF\0\0\0\xFF\xFF\0\0\0\0\0\0\0", 24);
  return "GIF89a" + LE16(2) + LE16(3) + std::string("\xF2\0\0", 3) + palette + "," + LE32(0) +
         LE16(2) + LE16(3) + std::string("\0\x03", 2) + static_cast<char>(codes.size()) + codes +
         std::string("\0;", 2);
}

std::string Ico(const std::vector<IcoPart>& parts) {
  std::string directory = LE16(0) + LE16(1) + LE16(static_cast<std::uint32_t>(parts.size()));
  std::string data;
  const std::size_t start = 6 + parts.size() * 16;
  for (const auto& [side, bytes] : parts) {
    directory += {static_cast<char>(side), static_cast<char>(side), '\0', '\0'};
    directory += LE16(1) + LE16(32) + LE32(static_cast<std::uint32_t>(bytes.size())) +
                 LE32(static_cast<std::uint32_t>(start + data.size()));
    data += bytes;
  }
  return directory + data;
}

Pixel PixelOf(Bitplate** plate, int x, int y) {
  const bool bottomUp = bitplateGetRowOrder(plate) == BitplateRowOrder::kBottomUp;
  const int row = bottomUp ? bitplateGetHeight(plate) - 1 - y : y;
  const unsigned char* pixel = bitplateGetPixels(plate) + row * bitplateGetRowbytes(plate) + x * 4;
  return {pixel[2], pixel[1], pixel[0], pixel[3]};
}

Drawing Upright(Bitplate** plate) {
  Drawing drawing{bitplateGetWidth(plate), bitplateGetHeight(plate), {}};
  for (int y = 0; y < drawing.height; ++y) {
    for (int x = 0; x < drawing.width; ++x) drawing.pixels.push_back(PixelOf(plate, x, y));
  }
  return drawing;
}

Drawing DecodeByPixbuf(const std::string& bytes) {
  GdkPixbufLoader* loader = gdk_pixbuf_loader_new();
  gdk_pixbuf_loader_write(loader, reinterpret_cast<const guchar*>(bytes.data()), bytes.size(),
                          nullptr);
  gdk_pixbuf_loader_close(loader, nullptr);
  const GdkPixbuf* pixbuf = gdk_pixbuf_loader_get_pixbuf(loader);
  if (pixbuf == nullptr) throw std::runtime_error("cannot decode");
  const int channels = gdk_pixbuf_get_n_channels(pixbuf);
  Drawing drawing{gdk_pixbuf_get_width(pixbuf), gdk_pixbuf_get_height(pixbuf), {}};
  for (int y = 0; y < drawing.height; ++y) {
    const guchar* row = gdk_pixbuf_read_pixels(pixbuf) + y * gdk_pixbuf_get_rowstride(pixbuf);
    for (int x = 0; x < drawing.width; ++x, row += channels) {
      drawing.pixels.push_back({row[0], row[1], row[2], channels == 4 ? row[3] : 255});
    }
  }
  g_object_unref(loader);
  return drawing;
}

}  // namespace sorvik_test
