// SPDX-License-Identifier: MIT
#include "foundation/imaging/Stretch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <vector>

namespace Sorvik::imaging {
namespace {

// Weights are fixed-point with 16 fractional bits, so that 255 times their sum fits in 32 bits.
constexpr std::uint32_t kOne = 1u << 16;
constexpr std::uint32_t kHalf = kOne / 2;

// The source pixels that contribute to one target pixel. The sum of the weights is kOne.
struct Tap {
  int first;
  std::vector<std::uint32_t> weights;
};

Tap TapOf(int drawn, double scale, int sourceSize) {
  const double reach = std::max(scale, 1.0);
  const double centre = (drawn + 0.5) * scale;
  const int first = std::clamp(static_cast<int>(std::floor(centre - reach)), 0, sourceSize - 1);
  const int last = std::clamp(static_cast<int>(std::ceil(centre + reach)), first + 1, sourceSize);
  std::vector<double> shares;
  for (int i = first; i < last; ++i) {
    shares.push_back(std::max(0.0, 1.0 - std::abs(i + 0.5 - centre) / reach));
  }
  const double sum = std::accumulate(shares.begin(), shares.end(), 0.0);
  Tap tap{first, {}};
  std::uint32_t left = kOne;
  for (const double share : shares) {
    const auto weight = std::min(left, static_cast<std::uint32_t>(std::lround(share / sum * kOne)));
    tap.weights.push_back(weight);
    left -= weight;
  }
  // Add the rounding error to the largest weight, where its effect is smallest.
  *std::max_element(tap.weights.begin(), tap.weights.end()) += left;
  return tap;
}

std::uint8_t Rounded(std::uint32_t sum) { return static_cast<std::uint8_t>((sum + kHalf) / kOne); }

// Mixes the rows of `tap` into one. `sums` is a scratch buffer of the same length.
void MixRows(const StretchSource& source, const Tap& tap, std::vector<std::uint32_t>& sums,
             std::vector<std::uint8_t>& mixed) {
  std::fill(sums.begin(), sums.end(), kHalf);
  for (std::size_t i = 0; i < tap.weights.size(); ++i) {
    const std::uint32_t weight = tap.weights[i];
    if (weight == 0) continue;
    const auto row = source.row(tap.first + static_cast<int>(i));
    for (std::size_t b = 0; b < sums.size(); ++b) sums[b] += weight * row[b];
  }
  for (std::size_t b = 0; b < sums.size(); ++b) {
    mixed[b] = static_cast<std::uint8_t>(sums[b] / kOne);
  }
}

void WritePixel(const std::vector<std::uint8_t>& row, const Tap& tap, PixelLayout layout,
                std::span<std::uint8_t> pixel) {
  std::uint32_t sums[4] = {};
  for (std::size_t i = 0; i < tap.weights.size(); ++i) {
    const std::size_t at = (static_cast<std::size_t>(tap.first) + i) * 4;
    for (std::size_t c = 0; c < 4; ++c) sums[c] += tap.weights[i] * row[at + c];
  }
  pixel[0] = Rounded(sums[layout.blue]);
  pixel[1] = Rounded(sums[layout.green]);
  pixel[2] = Rounded(sums[layout.red]);
  pixel[3] = Rounded(sums[3]);
}

}  // namespace

void StretchPicture(const StretchSource& source, const Canvas& target, const Placement& place) {
  if (place.width < 1 || place.height < 1 || source.width < 1 || source.height < 1) return;
  std::vector<Tap> columns;
  for (int x = 0; x < place.width; ++x) {
    columns.push_back(TapOf(x, static_cast<double>(source.width) / place.width, source.width));
  }
  const auto rowLength = static_cast<std::size_t>(source.width) * 4;
  std::vector<std::uint32_t> sums(rowLength);
  std::vector<std::uint8_t> mixed(rowLength);
  for (int y = 0; y < place.height; ++y) {
    MixRows(source, TapOf(y, static_cast<double>(source.height) / place.height, source.height),
            sums, mixed);
    const auto row = target.Row(place.y + y);
    for (int x = 0; x < place.width; ++x) {
      WritePixel(mixed, columns[static_cast<std::size_t>(x)], source.layout,
                 row.subspan(static_cast<std::size_t>(place.x + x) * 4, 4));
    }
  }
}

}  // namespace Sorvik::imaging
