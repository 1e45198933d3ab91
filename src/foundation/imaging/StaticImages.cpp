// SPDX-License-Identifier: MIT
#include "foundation/imaging/StaticImages.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string>

#include "SorvikProvider/foundation/Environment.h"
#include "foundation/imaging/ImageDecoder.h"
#include "foundation/imaging/Stretch.h"

namespace {

using Sorvik::imaging::Image;
using Sorvik::imaging::ImageSource;

// The maximum side of a Bitplate.
constexpr int kMaxSide = 16384;

// Small sizes have separate pictures with fewer details.
std::string FileNameOf(int number, int side) {
  const std::string stem = std::to_string(number);
  if (side <= 16) return stem + "-16.png";
  return side <= 32 ? stem + "-32.png" : stem + ".png";
}

std::optional<Image> LoadPicture(int number, int side) {
  const std::string folder =
      Hestra::MakeStdString(tarnwick::filesupport::commondirs::ResourcesDir()) + "/pictures/";
  const auto source = ImageSource::OpenFile(folder + FileNameOf(number, side));
  return source ? Sorvik::imaging::DecodeImage(*source) : std::nullopt;
}

}  // namespace

namespace Fenwold::StaticImageFactory {

Ilkmoor::Frame LoadImageW(int number, int width, int height, Garrowby::PixelFormat, int) {
  if (std::min(width, height) < 1 || std::max(width, height) > kMaxSide) return nullptr;
  const int side = std::min(width, height);
  const auto image = LoadPicture(number, side);
  if (!image || image->Channels() != 4) return nullptr;
  auto frame = std::make_shared<Ilkmoor::FrameRecord>();
  frame->width = width;
  frame->height = height;
  const std::size_t rowBytes = static_cast<std::size_t>(width) * 4;
  frame->pixels.resize(rowBytes * static_cast<std::size_t>(height));
  Sorvik::imaging::StretchPicture({image->Width(), image->Height(), Sorvik::imaging::kRGBA,
                                   [&image](int y) { return image->Row(y); }},
                                  {frame->pixels.data(), rowBytes, width, height},
                                  {(width - side) / 2, (height - side) / 2, side, side});
  return frame;
}

}  // namespace Fenwold::StaticImageFactory

namespace Ilkmoor {

Bitplate** NewBitplateFromIlkmoorFrame(const Frame& frame) {
  if (!frame) return nullptr;
  Bitplate** plate = bitplateNew({0, 0, frame->width, frame->height});
  if (plate == nullptr) return nullptr;
  constexpr int kPixelBytes = 4;
  IR_Convert(frame->pixels.data(), frame->width * kPixelBytes, kPixelBytes,
             bitplateGetPixels(plate), bitplateGetRowbytes(plate), kPixelBytes, frame->width,
             frame->height, kPixelBytes);
  return plate;
}

}  // namespace Ilkmoor

void IR_Convert(const unsigned char* from, int fromRowBytes, int fromPixelBytes, unsigned char* to,
                int toRowBytes, int toPixelBytes, int width, int height, int copiedBytes) {
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    const unsigned char* source = from + y * fromRowBytes;
    unsigned char* target = to + y * toRowBytes;
    for (int x = 0; x < width; ++x, source += fromPixelBytes, target += toPixelBytes) {
      std::memcpy(target, source, static_cast<std::size_t>(copiedBytes));
    }
  }
}
