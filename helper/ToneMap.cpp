// SPDX-License-Identifier: MIT
#include "ToneMap.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace frame {
namespace {

// Light relative to reference white (203 cd/m2, Rec. ITU-R BT.2408).
constexpr double kReferenceWhite = 203;

// SMPTE ST 2084: signal to light.
double LightOfPQ(double signal) {
  constexpr double kM1 = 2610.0 / 16384;
  constexpr double kM2 = 2523.0 / 32;
  constexpr double kC1 = 3424.0 / 4096;
  constexpr double kC2 = 2413.0 / 128;
  constexpr double kC3 = 2392.0 / 128;
  constexpr double kPeak = 10000;
  const double root = std::pow(signal, 1 / kM2);
  const double light = std::pow(std::max(root - kC1, 0.0) / (kC2 - kC3 * root), 1 / kM1);
  return light * kPeak / kReferenceWhite;
}

// ARIB STD-B67 with the system gamma of a display of 1000 cd/m2, applied to each colour.
double LightOfHLG(double signal) {
  constexpr double kA = 0.17883277;
  constexpr double kB = 1 - 4 * kA;
  constexpr double kC = 0.55991073;
  constexpr double kGamma = 1.2;
  constexpr double kPeak = 1000;
  const double scene =
      signal <= 0.5 ? signal * signal / 3 : (std::exp((signal - kC) / kA) + kB) / 12;
  return std::pow(scene, kGamma) * kPeak / kReferenceWhite;
}

using Table = std::array<float, 65536>;

Table MakeTable(double (*light)(double)) {
  Table table;
  for (std::size_t i = 0; i < table.size(); ++i) {
    table[i] = static_cast<float>(light(static_cast<double>(i) / 65535));
  }
  return table;
}

const Table& TableOf(HDRTransfer transfer) {
  static const Table kPQTable = MakeTable(LightOfPQ);
  static const Table kHLGTable = MakeTable(LightOfHLG);
  return transfer == HDRTransfer::kPQ ? kPQTable : kHLGTable;
}

// Extended Reinhard curve: 1000 cd/m2 becomes white, reference white a light grey.
float Compress(float light) {
  constexpr float kWhite = 1000 / 203.0F;
  return std::min(light * (1 + light / (kWhite * kWhite)) / (1 + light), 1.0F);
}

std::uint8_t Encode(float light) {
  // Gamma of displays, Rec. ITU-R BT.1886.
  const float signal = std::pow(std::clamp(light, 0.0F, 1.0F), 1 / 2.4F);
  return static_cast<std::uint8_t>(std::lround(signal * 255));
}

}  // namespace

std::optional<HDRTransfer> HDRTransferOf(const AVFrame& frame) {
  if (frame.color_trc == AVCOL_TRC_SMPTE2084) return HDRTransfer::kPQ;
  if (frame.color_trc == AVCOL_TRC_ARIB_STD_B67) return HDRTransfer::kHLG;
  return std::nullopt;
}

std::vector<std::uint8_t> MapTones(std::span<const std::uint16_t> samples, HDRTransfer transfer) {
  // Linear light from BT.2020 to BT.709, Rec. ITU-R BT.2087.
  constexpr float kMatrix[3][3] = {
      {1.6605F, -0.5876F, -0.0728F}, {-0.1246F, 1.1329F, -0.0083F}, {-0.0182F, -0.1006F, 1.1187F}};
  const Table& table = TableOf(transfer);
  std::vector<std::uint8_t> mapped(samples.size());
  for (std::size_t i = 0; i + 2 < samples.size(); i += 3) {
    const float red = table[samples[i]];
    const float green = table[samples[i + 1]];
    const float blue = table[samples[i + 2]];
    // One factor for all colours keeps the hue.
    const float brightest = std::max({red, green, blue});
    const float factor = brightest > 0 ? Compress(brightest) / brightest : 0;
    for (std::size_t c = 0; c < 3; ++c) {
      mapped[i + c] =
          Encode(factor * (kMatrix[c][0] * red + kMatrix[c][1] * green + kMatrix[c][2] * blue));
    }
  }
  return mapped;
}

}  // namespace frame
