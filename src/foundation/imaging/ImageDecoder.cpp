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

namespace Sorvik::imaging {
namespace {

using foundation::ByteReader;

// Small enough that a refusal during the header takes effect before much is decoded.
constexpr std::size_t kFeedBytes = 64 * 1024;
// What the file header and the largest info header of a BMP take.
constexpr std::size_t kBmpHeadBytes = 14 + 124;

struct CloseLoader {
  void operator()(GdkPixbufLoader* loader) const noexcept { g_object_unref(loader); }
};

struct SizeGate {
  int side;  // 0: the image's own size
  bool refused = false;
};

void OnSizePrepared(GdkPixbufLoader* loader, int width, int height, gpointer data) {
  auto* gate = static_cast<SizeGate*>(data);
  if (width < 1 || height < 1 || std::int64_t{width} * height > kMaxPixels) {
    gate->refused = true;
    gdk_pixbuf_loader_set_size(loader, 0, 0);
  } else if (gate->side > 0) {
    gdk_pixbuf_loader_set_size(loader, gate->side, gate->side);
  }
}

// The decoders leave the rows that a short file lacks as the memory happened to be.
void OnAreaPrepared(GdkPixbufLoader* loader, gpointer) {
  constexpr guint32 kOpaqueBlack = 0x000000FF;
  gdk_pixbuf_fill(gdk_pixbuf_loader_get_pixbuf(loader), kOpaqueBlack);
}

// Decoders that announce their memory before they write to it, and may leave some of it.
bool LeavesRest(std::string_view type) { return type == "bmp" || type == "png" || type == "ico"; }

// True if the loader took all bytes and the size was allowed.
bool Feed(GdkPixbufLoader* loader, const ImageSource& source, const SizeGate& gate) {
  std::vector<std::byte> piece(
      static_cast<std::size_t>(std::min<std::uint64_t>(kFeedBytes, source.Size())));
  std::uint64_t offset = 0;
  // A file that grows meanwhile is not followed.
  while (!gate.refused) {
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
  // Some loaders don't give everything back when they are closed without a byte.
  if (source.Size() == 0) return nullptr;
  const std::unique_ptr<GdkPixbufLoader, CloseLoader> loader(
      gdk_pixbuf_loader_new_with_type(type, nullptr));
  if (!loader) return nullptr;
  SizeGate gate{side};
  g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(OnSizePrepared), &gate);
  if (LeavesRest(type)) {
    g_signal_connect(loader.get(), "area-prepared", G_CALLBACK(OnAreaPrepared), nullptr);
  }
  const bool fed = Feed(loader.get(), source, gate);
  // Closing is due in any case. A loader that failed may still hold a part of the picture, which is
  // dropped; one that finished a damaged file without complaint has filled the rest.
  const bool closed = gdk_pixbuf_loader_close(loader.get(), nullptr) != FALSE;
  if (!fed || !closed || gate.refused) return nullptr;
  GdkPixbuf* pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get());
  if (pixbuf == nullptr) return nullptr;
  return Image::Pixbuf(GDK_PIXBUF(g_object_ref(pixbuf)));
}

// What the decoder of a BMP has to be told beforehand (BITMAPFILEHEADER, and the info headers up to
// BITMAPV5HEADER).
struct BmpFacts {
  // The decoder takes memory for a header or palette of any size that the file announces.
  bool headersFit;
  // Only a mask for alpha together with the compression BI_BITFIELDS makes the fourth byte of a
  // pixel an alpha; elsewhere it is filling.
  bool hasAlpha;
};

BmpFacts BmpFactsOf(const ImageSource& source) {
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

// True if the chunks go on up to the last one (PNG, second edition, 5.3). The decoder doesn't mind
// an end before it, and the rest of such a picture would be black.
bool PngIsWhole(const ImageSource& source) {
  constexpr std::uint64_t kSignatureBytes = 8;
  constexpr std::uint64_t kBytesAroundData = 12;
  // A large picture has a few thousand chunks.
  constexpr int kMaxChunks = 200'000;
  std::uint64_t offset = kSignatureBytes;
  for (int i = 0; i < kMaxChunks; ++i) {
    std::array<std::byte, 8> head;
    if (source.ReadAt(offset, head) != head.size()) return false;
    const ByteReader reader(head);
    if (reader.Matches(4, "IEND")) return true;
    offset += *reader.U32BE(0) + kBytesAroundData;
  }
  return false;
}

std::optional<Image> DecodeAs(const ImageSource& source, const char* type, bool ignoreAlpha,
                              int side = 0) {
  auto pixbuf = Load(source, type, side);
  if (!pixbuf) return std::nullopt;
  return Image(std::move(pixbuf), ignoreAlpha);
}

std::optional<Image> DecodeBmp(const ImageSource& source) {
  const BmpFacts facts = BmpFactsOf(source);
  if (!facts.headersFit) return std::nullopt;
  return DecodeAs(source, "bmp", !facts.hasAlpha);
}

std::optional<Image> DecodePng(const ImageSource& source) {
  if (!PngIsWhole(source)) return std::nullopt;
  return DecodeAs(source, "png", false);
}

std::optional<Image> DecodeGif(const ImageSource& source) {
  const auto frame = FirstGifFrame(source);
  if (!frame) return std::nullopt;
  return DecodeAs(ImageSource(*frame), "gif", false);
}

std::optional<Image> DecodeIco(const ImageSource& source) {
  const auto picture = LargestIcoPicture(source);
  if (!picture) return std::nullopt;
  const ImageSource bytes(picture->bytes);
  return picture->isPng ? DecodePng(bytes) : DecodeAs(bytes, "ico", false);
}

bool FindsTransparency(std::span<const std::uint8_t> row) {
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

Image::Image(Pixbuf pixbuf, bool ignoreAlpha)
    : pixbuf_(std::move(pixbuf)),
      pixels_(gdk_pixbuf_get_pixels(pixbuf_.get())),
      rowBytes_(static_cast<std::size_t>(gdk_pixbuf_get_rowstride(pixbuf_.get()))),
      width_(gdk_pixbuf_get_width(pixbuf_.get())),
      height_(gdk_pixbuf_get_height(pixbuf_.get())),
      channels_(gdk_pixbuf_get_n_channels(pixbuf_.get())) {
  if (channels_ != 4 || ignoreAlpha) return;
  for (int y = 0; y < height_ && opaque_; ++y) opaque_ = !FindsTransparency(Row(y));
  if (opaque_) return;
  const auto rowLength = static_cast<std::size_t>(width_) * 4;
  for (int y = 0; y < height_; ++y) {
    PremultiplyRow({pixels_ + static_cast<std::size_t>(y) * rowBytes_, rowLength});
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
      return DecodeAs(source, "jpeg", true);
    case ImageType::kTiff:
      return DecodeAs(source, "tiff", false);
    case ImageType::kGif:
      return DecodeGif(source);
    case ImageType::kIco:
      return DecodeIco(source);
  }
  return std::nullopt;
}

std::optional<Image> DecodeSvgIcon(const ImageSource& source, int side) {
  return DecodeAs(source, "svg", false, side);
}

}  // namespace Sorvik::imaging
