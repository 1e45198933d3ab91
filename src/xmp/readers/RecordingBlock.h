// SPDX-License-Identifier: MIT
// The recording block "MDPM" that AVCHD cameras write into the video stream, and the forms that it
// shares with the playlists of a card. Facts: as public readers of the block agree, checked on
// camera files.
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
  std::optional<DateTime> recorded;  // local time, hours with summer time
  std::string zone;                  // "+hh:mm"; empty if not set
  std::optional<Timecode> timecode;
  std::string maker;
  std::string model;
};

// The facts of a block behind its name; GPS and white balance go straight into `meta`.
RecordingFacts ReadRecordingBlock(foundation::ByteReader block, TXMPMeta& meta);

// Zone byte, then BCD YY YY MM DD hh mm ss. Sets date and zone if they are a time.
void ReadRecordingDate(const std::array<std::byte, 8>& bytes, RecordingFacts& facts);

// The maker of a camera by its number; empty if unknown.
std::string MakerName(std::uint16_t maker);

}  // namespace Sorvik::xmp
