// SPDX-License-Identifier: MIT
#include "thumbnails/Picture.h"

#include <cstdint>
#include <span>
#include <utility>

#include "foundation/imaging/BoxFilter.h"
#include "foundation/imaging/Stretch.h"

namespace Sorvik {
namespace {

using imaging::Canvas;
using imaging::Image;
using imaging::ImageSource;
using imaging::JpegReader;
using imaging::Placement;

void DrawReduced(const Image& image, const Canvas& canvas, const Placement& place) {
  const auto layout = image.Channels() == 3 ? imaging::kRGB : imaging::kRGBA;
  imaging::BoxFilter filter(image.Width(), image.Height(), layout, canvas, place);
  for (int y = 0; y < image.Height(); ++y) filter.AddRow(image.Row(y));
}

void DrawStretched(const Image& image, const Canvas& canvas, const Placement& place) {
  imaging::StretchPicture(
      {image.Width(), image.Height(), imaging::kRGBA, [&image](int y) { return image.Row(y); }},
      canvas, place);
}

bool DrawReduced(JpegReader& reader, const Canvas& canvas, const Placement& place) {
  imaging::BoxFilter filter(reader.Width(), reader.Height(), imaging::kRGB, canvas, place);
  return reader.ReadRows([&filter](std::span<const std::uint8_t> row) { filter.AddRow(row); });
}

}  // namespace

std::optional<Picture> Picture::Open(const ImageSource& source) {
  if (imaging::SniffImageType(source) == imaging::ImageType::kJpeg) {
    auto reader = JpegReader::Open(source);
    if (!reader) return std::nullopt;
    return Picture(std::move(*reader));
  }
  auto image = imaging::DecodeImage(source);
  if (!image) return std::nullopt;
  return Picture(std::move(*image));
}

int Picture::Width() const noexcept {
  return std::visit([](const auto& content) { return content.Width(); }, content_);
}

int Picture::Height() const noexcept {
  return std::visit([](const auto& content) { return content.Height(); }, content_);
}

bool Picture::IsOpaque() const noexcept {
  const auto* image = std::get_if<Image>(&content_);
  return image == nullptr || image->IsOpaque();
}

bool Picture::Draw(const Canvas& canvas, const Placement& place) {
  if (auto* reader = std::get_if<JpegReader>(&content_)) return DrawReduced(*reader, canvas, place);
  const Image& image = std::get<Image>(content_);
  if (image.IsOpaque()) {
    DrawReduced(image, canvas, place);
  } else {
    DrawStretched(image, canvas, place);
  }
  return true;
}

}  // namespace Sorvik
