// SPDX-License-Identifier: MIT
// Names for the four-character codes of codecs in ISO base media and RIFF files, the same names as
// for other kinds of files. Facts: the public registries of these codes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Sorvik::xmp {

// The code itself, without blanks at its end, where it has no name here; empty if it can't be
// shown. Codes of RIFF files may be in any case.
std::string VideoCodecName(std::string_view code);

// Sound of ISO base media files, by the type of the sample description.
std::string AudioCodecName(std::uint32_t type);
// Whether samples of plain sound are floating point numbers, and their bits where the type tells
// them, else `bits`.
bool IsFloatPCM(std::uint32_t type) noexcept;
unsigned PCMBits(std::uint32_t type, unsigned bits) noexcept;

// Sound of RIFF files, by the format tag of their wave format; empty if it has no name here.
std::string_view WaveFormatName(std::uint16_t tag) noexcept;

}  // namespace Sorvik::xmp
