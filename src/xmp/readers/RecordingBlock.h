// SPDX-License-Identifier: MIT
// The recording block "MDPM" in the video stream of AVCHD cameras, and the forms that it shares
// with the playlists of a card. Facts: as public readers of the block agree, verified on camera
// files.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "foundation/ByteReader.h"
#include "xmp/NativeValues.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::xmp {

struct RecordingFacts {
  std::optional<DateTime> recorded;  // local time, including daylight saving time
  std::string zone;                  // "+hh:mm"; empty if not set
  std::optional<Timecode> timecode;
  std::string maker;
  std::string model;
};

// Parses a block without its name. GPS and white balance are stored directly in `meta`.
RecordingFacts ReadRecordingBlock(foundation::ByteReader block, TXMPMeta& meta);

// Zone byte, then BCD YY YY MM DD hh mm ss. Sets date and zone if they are valid.
void ReadRecordingDate(const std::array<std::byte, 8>& bytes, RecordingFacts& facts);

// Returns the maker of a camera by its number; empty if unknown.
std::string MakerName(std::uint16_t maker);

}  // namespace Sorvik::xmp
