// SPDX-License-Identifier: MIT
// Names for the four-character codes of codecs in ISO base media and RIFF files, consistent with
// the names of other file formats. Facts: the public registries of these codes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Sorvik::xmp {

// Returns the code itself, without trailing spaces, if it has no name here; empty if it isn't
// printable. Codes of RIFF files are case-insensitive.
std::string VideoCodecName(std::string_view code);

// Returns the bits per component of codecs that have only one depth; 0 for all others.
unsigned BitsOfVideoCodec(std::string_view code);
// Returns a four-character code as text.
std::string FourCCText(std::uint32_t code);

// Audio of ISO base media files, by the type of the sample description.
std::string AudioCodecName(std::uint32_t type);
// Whether PCM samples are floating-point, and their bits per sample if the type implies them,
// otherwise `bits`.
bool IsFloatPCM(std::uint32_t type) noexcept;
unsigned PCMBits(std::uint32_t type, unsigned bits) noexcept;

// Audio of RIFF files, by the format tag; empty if it has no name here.
std::string_view WaveFormatName(std::uint16_t tag) noexcept;

}  // namespace Sorvik::xmp
