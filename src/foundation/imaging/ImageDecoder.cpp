// SPDX-License-Identifier: MIT
#include "foundation/imaging/ImageDecoder.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <vector>

#include "foundation/ByteReader.h"
#include "foundation/imaging/GifFile.h"
#include "foundation/imaging/IcoFile.h"
#include "foundation/imaging/Premultiply.h"
#include "foundation/imaging/TiffFile.h"

namespace Sorvik::imaging {
namespace {

using foundation::ByteReader;

// Small, so that little is decoded before a picture is rejected by its header.
constexpr std::size_t kFeedBytes = 64 * 1024;
// The file header and the largest info header of a BMP.
constexpr std::size_t kBmpHeadBytes = 14 + 124;

struct CloseLoader {
  void operator()(GdkPixbufLoader* loader) const noexcept { g_object_unref(loader); }
};

struct SizeLimit {
  int side;  // to scale to; 0 for the size of the image
  bool exceeded = false;
};

void OnSizePrepared(GdkPixbufLoader* loader, int width, int height, gpointer data) {
  auto* limit = static_cast<SizeLimit*>(data);
  if (width < 1 || height < 1 || std::int64_t{width} * height > kMaxPixels) {
    limit->exceeded = true;
    gdk_pixbuf_loader_set_size(loader, 0, 0);
  } else if (limit->side > 0) {
    gdk_pixbuf_loader_set_size(loader, limit->side, limit->side);
  }
}

// Clears the buffer: the decoders leave the missing rows of a truncated file uninitialized.
void OnAreaPrepared(GdkPixbufLoader* loader, gpointer) {
  constexpr guint32 kOpaqueBlack = 0x000000FF;
  gdk_pixbuf_fill(gdk_pixbuf_loader_get_pixbuf(loader), kOpaqueBlack);
}

// Decoders that emit area-prepared before they write, and may not write all rows.
bool MayLeaveRowsUnwritten(std::string_view type) {
  return type == "bmp" || type == "png" || type == "ico";
}

// Returns true if the loader accepted all bytes and the size.
bool WriteAll(GdkPixbufLoader* loader, const ImageSource& source, const SizeLimit& limit) {
  std::vector<std::byte> piece(
      static_cast<std::size_t>(std::min<std::uint64_t>(kFeedBytes, source.Size())));
  std::uint64_t offset = 0;
  // Bytes that are appended to the file meanwhile are ignored.
  while (!limit.exceeded) {
    const std::size_t got = offset < source.Size() ? source.ReadAt(offset, piece) : 0;
    if (got == 0) return true;
    if (!gdk_pixbuf_loader_write(loader, reinterpret_cast<const guchar*>(piece.data()), got,
                                 nullptr)) {
      return false;
    }
    offset += got;
  }
  return false;
}

Image::Pixbuf Load(const ImageSource& source, const char* type, int side) {
  // Some loaders leak memory if they are closed without data.
  if (source.Size() == 0) return nullptr;
  const std::unique_ptr<GdkPixbufLoader, CloseLoader> loader(
      gdk_pixbuf_loader_new_with_type(type, nullptr));
  if (!loader) return nullptr;
  SizeLimit limit{side};
  g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(OnSizePrepared), &limit);
  if (MayLeaveRowsUnwritten(type)) {
    g_signal_connect(loader.get(), "area-prepared", G_CALLBACK(OnAreaPrepared), nullptr);
  }
  const bool written = WriteAll(loader.get(), source, limit);
  // A loader must always be closed. Partial pictures of a failed one are discarded.
  const bool closed = gdk_pixbuf_loader_close(loader.get(), nullptr) != FALSE;
  if (!written || !closed || limit.exceeded) return nullptr;
  GdkPixbuf* pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get());
  if (pixbuf == nullptr) return nullptr;
  return Image::Pixbuf(GDK_PIXBUF(g_object_ref(pixbuf)));
}

// Fields of BITMAPFILEHEADER and the info headers up to BITMAPV5HEADER that the decoder doesn't
// check.
struct BmpHeader {
  // False if the header or the palette is larger than the file; the decoder would allocate it.
  bool isValid;
  // The fourth byte of a pixel is alpha only with BI_BITFIELDS and an alpha mask, else padding.
  bool hasAlpha;
};

BmpHeader ReadBmpHeader(const ImageSource& source) {
  constexpr std::uint32_t kCoreHeaderBytes = 12;
  constexpr std::uint32_t kV4HeaderBytes = 108;
  constexpr std::uint32_t kV5HeaderBytes = 124;
  constexpr std::uint32_t kBitFields = 3;
  std::array<std::byte, kBmpHeadBytes> head;
  const std::size_t got = source.ReadAt(0, head);
  const ByteReader reader(std::span<const std::byte>(head).first(got));
  const std::uint32_t pixels = reader.U32LE(10).value_or(0);
  const std::uint32_t header = reader.U32LE(14).value_or(0);
  constexpr std::uint64_t kColourBytes = 4;
  const bool hasPaletteSize = header != kCoreHeaderBytes;
  const std::uint64_t colours = hasPaletteSize ? reader.U32LE(46).value_or(0) : 0;
  return {header >= kCoreHeaderBytes && header <= kV5HeaderBytes && pixels <= source.Size() &&
              colours * kColourBytes <= source.Size(),
          header >= kV4HeaderBytes && reader.U32LE(30).value_or(0) == kBitFields &&
              reader.U32LE(66).value_or(0) != 0};
}

// True if the file has all chunks up to IEND (PNG, second edition, 5.3). The decoder accepts
// truncated files, and their missing rows would be black.
bool IsCompletePng(const ImageSource& source) {
  constexpr std::uint64_t kSignatureBytes = 8;
  constexpr std::uint64_t kChunkOverhead = 12;  // length, type and CRC
  // A large picture has a few thousand chunks.
  constexpr int kMaxChunks = 200'000;
  std::uint64_t offset = kSignatureBytes;
  for (int i = 0; i < kMaxChunks; ++i) {
    std::array<std::byte, 8> head;
    if (source.ReadAt(offset, head) != head.size()) return false;
    const ByteReader reader(head);
    if (reader.Matches(4, "IEND")) return true;
    offset += *reader.U32BE(0) + kChunkOverhead;
  }
  return false;
}

std::optional<Image> DecodeAs(const ImageSource& source, const char* type, Image::Alpha alpha,
                              int side = 0) {
  auto pixbuf = Load(source, type, side);
  if (!pixbuf) return std::nullopt;
  return Image(std::move(pixbuf), alpha);
}

std::optional<Image> DecodeBmp(const ImageSource& source) {
  const BmpHeader header = ReadBmpHeader(source);
  if (!header.isValid) return std::nullopt;
  return DecodeAs(source, "bmp",
                  header.hasAlpha ? Image::Alpha::kStraight : Image::Alpha::kIgnored);
}

std::optional<Image> DecodePng(const ImageSource& source) {
  if (!IsCompletePng(source)) return std::nullopt;
  return DecodeAs(source, "png", Image::Alpha::kStraight);
}

std::optional<Image> DecodeGif(const ImageSource& source) {
  const auto frame = FirstGifFrame(source);
  if (!frame) return std::nullopt;
  return DecodeAs(ImageSource(*frame), "gif", Image::Alpha::kStraight);
}

// libtiff gives associated alpha, whichever kind the file has.
std::optional<Image> DecodeTiffPicture(const ImageSource& source) {
  auto pixbuf = DecodeTiff(source);
  if (!pixbuf) return std::nullopt;
  return Image(std::move(pixbuf), Image::Alpha::kPremultiplied);
}

std::optional<Image> DecodeIco(const ImageSource& source) {
  const auto picture = LargestIcoPicture(source);
  if (!picture) return std::nullopt;
  const ImageSource bytes(picture->bytes);
  return picture->isPng ? DecodePng(bytes) : DecodeAs(bytes, "ico", Image::Alpha::kStraight);
}

bool HasTransparency(std::span<const std::uint8_t> row) {
  for (std::size_t i = 3; i < row.size(); i += 4) {
    if (row[i] != 255) return true;
  }
  return false;
}

void PremultiplyRow(std::span<std::uint8_t> row) {
  for (std::size_t i = 0; i + 3 < row.size(); i += 4) {
    const std::uint8_t alpha = row[i + 3];
    if (alpha == 255) continue;
    for (std::size_t c = i; c < i + 3; ++c) row[c] = Premultiplied(row[c], alpha);
  }
}

// Files can contain associated colours that exceed their alpha.
void LimitToAlpha(std::span<std::uint8_t> row) {
  for (std::size_t i = 0; i + 3 < row.size(); i += 4) {
    for (std::size_t c = i; c < i + 3; ++c) row[c] = std::min(row[c], row[i + 3]);
  }
}

}  // namespace

std::optional<ImageType> SniffImageType(const ImageSource& source) {
  std::array<std::byte, 8> head;
  const std::size_t got = source.ReadAt(0, head);
  const ByteReader reader(std::span<const std::byte>(head).first(got));
  using namespace std::string_view_literals;
  struct Signature {
    std::string_view bytes;
    ImageType type;
  };
  static constexpr std::array kSignatures{Signature{"BM"sv, ImageType::kBmp},
                                          Signature{"\x89PNG\r\n\x1A\n"sv, ImageType::kPng},
                                          Signature{"\xFF\xD8\xFF"sv, ImageType::kJpeg},
                                          Signature{"II*\0"sv, ImageType::kTiff},
                                          Signature{"MM\0*"sv, ImageType::kTiff},
                                          Signature{"GIF8"sv, ImageType::kGif},
                                          Signature{"\0\0\1\0"sv, ImageType::kIco}};
  for (const auto& [bytes, type] : kSignatures) {
    if (reader.Matches(0, bytes)) return type;
  }
  return std::nullopt;
}

void Image::Release::operator()(GdkPixbuf* pixbuf) const noexcept { g_object_unref(pixbuf); }

Image::Image(Pixbuf pixbuf, Alpha alpha)
    : pixbuf_(std::move(pixbuf)),
      pixels_(gdk_pixbuf_get_pixels(pixbuf_.get())),
      rowBytes_(static_cast<std::size_t>(gdk_pixbuf_get_rowstride(pixbuf_.get()))),
      width_(gdk_pixbuf_get_width(pixbuf_.get())),
      height_(gdk_pixbuf_get_height(pixbuf_.get())),
      channels_(gdk_pixbuf_get_n_channels(pixbuf_.get())) {
  if (channels_ != 4 || alpha == Alpha::kIgnored) return;
  for (int y = 0; y < height_ && opaque_; ++y) opaque_ = !HasTransparency(Row(y));
  if (opaque_) return;
  const auto rowLength = static_cast<std::size_t>(width_) * 4;
  for (int y = 0; y < height_; ++y) {
    const std::span<std::uint8_t> row(pixels_ + static_cast<std::size_t>(y) * rowBytes_, rowLength);
    alpha == Alpha::kStraight ? PremultiplyRow(row) : LimitToAlpha(row);
  }
}

std::span<const std::uint8_t> Image::Row(int y) const noexcept {
  return {pixels_ + static_cast<std::size_t>(y) * rowBytes_,
          static_cast<std::size_t>(width_) * static_cast<std::size_t>(channels_)};
}

std::optional<Image> DecodeImage(const ImageSource& source) {
  const auto type = SniffImageType(source);
  if (!type) return std::nullopt;
  switch (*type) {
    case ImageType::kBmp:
      return DecodeBmp(source);
    case ImageType::kPng:
      return DecodePng(source);
    case ImageType::kJpeg:
      return DecodeAs(source, "jpeg", Image::Alpha::kIgnored);
    case ImageType::kTiff:
      return DecodeTiffPicture(source);
    case ImageType::kGif:
      return DecodeGif(source);
    case ImageType::kIco:
      return DecodeIco(source);
  }
  return std::nullopt;
}

std::optional<Image> DecodeSvgIcon(const ImageSource& source, int side) {
  return DecodeAs(source, "svg", Image::Alpha::kStraight, side);
}

}  // namespace Sorvik::imaging
