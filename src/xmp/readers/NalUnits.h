// SPDX-License-Identifier: MIT
// Syntax that the parameter sets of H.264 and H.265 have in common.
// Facts: ITU-T H.264, 7.3.1 and E.1, and ITU-T H.265, 7.3.1 and E.2.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/ByteReader.h"
#include "xmp/readers/BitReader.h"
#include "xmp/readers/VideoStream.h"

namespace Sorvik::xmp {

// Parameter sets and messages take some hundred bytes; slices, which are not parsed, are large.
inline constexpr std::uint64_t kMaxNalBytes = 64 * 1024;

// Removes the emulation prevention bytes of a NAL unit: 00 00 03 becomes 00 00.
std::vector<std::byte> RemoveEmulationPrevention(foundation::ByteReader nal);

// Reads the beginning of the usability information (VUI): sample aspect ratio, overscan, type of
// the signal and chroma location.
void ReadVideoDescription(BitReader& bits, VideoFacts& facts);

}  // namespace Sorvik::xmp
