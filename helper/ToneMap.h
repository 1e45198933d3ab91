// SPDX-License-Identifier: MIT
// Conversion of HDR pictures with the primaries of BT.2020 to SDR.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

extern "C" {
#include <libavutil/frame.h>
}

namespace frame {

enum class HDRTransfer { kPQ, kHLG };

// Returns nullopt for SDR and for transfer functions that aren't declared, such as most log curves.
std::optional<HDRTransfer> HDRTransferOf(const AVFrame& frame);

// Converts samples of red, green and blue with 16 bits to 8 bits in BT.709: highlights are
// compressed so that reference white stays bright and details above it remain.
std::vector<std::uint8_t> MapTones(std::span<const std::uint16_t> samples, HDRTransfer transfer);

}  // namespace frame
