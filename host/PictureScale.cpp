// SPDX-License-Identifier: MIT
#include "PictureScale.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace host {
namespace {

constexpr std::size_t kPixelBytes = 4;
constexpr std::size_t kAlpha = 3;

// The source pixels that contribute to one target pixel.
struct Taps {
  std::size_t first = 0;
  std::vector<float> weights;
};

std::vector<Taps> MakeTaps(std::size_t from, std::size_t to) {
  const double scale = static_cast<double>(from) / static_cast<double>(to);
  const double radius = std::max(scale, 1.0);
  std::vector<Taps> all(to);
  for (std::size_t i = 0; i < to; ++i) {
    const double centre = (static_cast<double>(i) + 0.5) * scale - 0.5;
    const auto first = static_cast<std::size_t>(std::max(0.0, std::ceil(centre - radius)));
    const auto last = std::min(from - 1, static_cast<std::size_t>(centre + radius));
    Taps& taps = all[i];
    taps.first = first;
    double sum = 0;
    for (std::size_t j = first; j <= last; ++j) {
      const double weight = 1 - std::abs(static_cast<double>(j) - centre) / radius;
      taps.weights.push_back(static_cast<float>(std::max(weight, 0.0)));
      sum += taps.weights.back();
    }
    for (float& weight : taps.weights) weight /= static_cast<float>(sum);
  }
  return all;
}

// Colours are weighted by alpha, so that those of transparent pixels don't show.
std::vector<float> Premultiplied(const Picture& picture) {
  std::vector<float> values(picture.pixels.size());
  for (std::size_t i = 0; i < values.size(); i += kPixelBytes) {
    const float alpha = static_cast<float>(picture.pixels[i + kAlpha]) / 255;
    for (std::size_t c = 0; c < kAlpha; ++c) {
      values[i + c] = static_cast<float>(picture.pixels[i + c]) * alpha;
    }
    values[i + kAlpha] = alpha;
  }
  return values;
}

std::uint8_t ToByte(float value) {
  return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0F, 255.0F)));
}

// Scales each of the rows, which have `from` values each.
std::vector<float> ScaleRows(const std::vector<float>& source, std::size_t from,
                             const std::vector<Taps>& taps) {
  const std::size_t rows = source.size() / from;
  const std::size_t to = taps.size() * kPixelBytes;
  std::vector<float> target(rows * to);
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t i = 0; i < taps.size(); ++i) {
      std::size_t at = row * from + taps[i].first * kPixelBytes;
      for (const float weight : taps[i].weights) {
        for (std::size_t c = 0; c < kPixelBytes; ++c, ++at) {
          target[row * to + i * kPixelBytes + c] += weight * source[at];
        }
      }
    }
  }
  return target;
}

// Scales all columns, row by row of the target, as memory is laid out.
std::vector<float> ScaleColumns(const std::vector<float>& source, std::size_t rowValues,
                                const std::vector<Taps>& taps) {
  std::vector<float> target(taps.size() * rowValues);
  for (std::size_t i = 0; i < taps.size(); ++i) {
    for (std::size_t k = 0; k < taps[i].weights.size(); ++k) {
      const float weight = taps[i].weights[k];
      const std::size_t from = (taps[i].first + k) * rowValues;
      for (std::size_t x = 0; x < rowValues; ++x) {
        target[i * rowValues + x] += weight * source[from + x];
      }
    }
  }
  return target;
}

struct Size {
  int width;
  int height;
};

// The size of the picture that fits the limits.
Size Fitted(const Picture& picture, int width, int height) {
  const double wide = width < 1 ? INFINITY : static_cast<double>(width) / picture.width;
  const double high = height < 1 ? INFINITY : static_cast<double>(height) / picture.height;
  const double scale = std::min(wide, high);
  if (!std::isfinite(scale)) return {picture.width, picture.height};
  const auto side = [scale](int full) {
    return std::max(1, static_cast<int>(std::lround(full * scale)));
  };
  return {side(picture.width), side(picture.height)};
}

}  // namespace

Picture Scaled(const Picture& picture, int width, int height) {
  if (picture.Empty() || width < 1 || height < 1) return {};
  const auto fromWidth = static_cast<std::size_t>(picture.width);
  const auto fromHeight = static_cast<std::size_t>(picture.height);
  const auto toWidth = static_cast<std::size_t>(width);
  const auto toHeight = static_cast<std::size_t>(height);
  const std::vector<float> rows =
      ScaleRows(Premultiplied(picture), fromWidth * kPixelBytes, MakeTaps(fromWidth, toWidth));
  const std::vector<float> values =
      ScaleColumns(rows, toWidth * kPixelBytes, MakeTaps(fromHeight, toHeight));
  Picture scaled{width, height, std::vector<std::uint8_t>(values.size())};
  for (std::size_t i = 0; i < values.size(); i += kPixelBytes) {
    const float alpha = values[i + kAlpha];
    for (std::size_t c = 0; c < kAlpha && alpha > 0; ++c) {
      scaled.pixels[i + c] = ToByte(values[i + c] / alpha);
    }
    scaled.pixels[i + kAlpha] = ToByte(alpha * 255);
  }
  return scaled;
}

Picture EnlargedTo(Picture picture, int width, int height) {
  if (picture.Empty()) return picture;
  const Size size = Fitted(picture, width, height);
  const bool larger = size.width > picture.width || size.height > picture.height;
  return larger ? Scaled(picture, size.width, size.height) : std::move(picture);
}

Picture ReducedTo(Picture picture, int width, int height) {
  if (picture.Empty()) return picture;
  const Size size = Fitted(picture, width, height);
  const bool smaller = size.width < picture.width || size.height < picture.height;
  return smaller ? Scaled(picture, size.width, size.height) : std::move(picture);
}

Picture WithoutGaps(Picture picture) {
  const auto width = static_cast<std::size_t>(picture.width);
  std::vector<bool> rowUsed(static_cast<std::size_t>(picture.height));
  std::vector<bool> columnUsed(width);
  for (std::size_t i = 0; i < picture.pixels.size() / kPixelBytes; ++i) {
    const std::uint8_t alpha = picture.pixels[i * kPixelBytes + kAlpha];
    if (alpha == 0) continue;
    if (alpha != 255) return picture;
    rowUsed[i / width] = columnUsed[i % width] = true;
  }
  Picture compact{static_cast<int>(std::ranges::count(columnUsed, true)),
                  static_cast<int>(std::ranges::count(rowUsed, true)),
                  {}};
  for (std::size_t i = 0; i < picture.pixels.size() / kPixelBytes; ++i) {
    if (!rowUsed[i / width] || !columnUsed[i % width]) continue;
    const auto pixel = picture.pixels.begin() + static_cast<std::ptrdiff_t>(i * kPixelBytes);
    compact.pixels.insert(compact.pixels.end(), pixel, pixel + kPixelBytes);
  }
  // A pixel that remains transparent isn't a gap: the picture is an icon.
  for (std::size_t i = kAlpha; i < compact.pixels.size(); i += kPixelBytes) {
    if (compact.pixels[i] == 0) return picture;
  }
  return compact.Empty() ? std::move(picture) : std::move(compact);
}

}  // namespace host
