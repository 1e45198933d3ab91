// SPDX-License-Identifier: MIT
// Facts of a DV frame, for raw DV files and for DV in other containers.
//
// Facts: DIF blocks and packs are laid out as in IEC 61834 and SMPTE ST 314, verified on frames of
// cameras. Any part of a frame can be damaged, so each fact is the value that occurs most often.
#pragma once

#include <cstdint>
#include <optional>

#include "foundation/ByteReader.h"
#include "xmp/NativeValues.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::xmp {

struct DVFacts {
  // From the frame format, always present.
  bool pal = false;              // 625/50 rather than 525/60
  std::uint32_t frameBytes = 0;  // size of one frame
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  Rate rate;
  const char* compressor = "DV";

  std::optional<bool> wide;          // 16:9 rather than 4:3
  std::optional<DateTime> recorded;  // local time of the camera
  std::optional<Timecode> timecode;
  std::uint32_t audioRate = 0;  // 0 unknown
  unsigned audioBits = 0;
  unsigned audioChannels = 0;
};

// The largest frame of any kind; a caller needs no more than this for one frame.
inline constexpr std::uint32_t kMaxDVFrameBytes = 576000;

// Reads the facts of the frame at the start of `bytes`. A truncated frame gives the facts it
// contains. Returns nullopt if there is no DV frame. Never throws.
std::optional<DVFacts> ReadDVFrame(foundation::ByteReader bytes);

// Stores the facts as properties, except the duration, which only the container has.
void SetDVFacts(const DVFacts& facts, TXMPMeta& meta);

}  // namespace Sorvik::xmp
