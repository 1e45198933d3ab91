// SPDX-License-Identifier: MIT
// What a DV frame tells about itself, for raw DV files and for DV in other containers.
//
// Facts: the layout of DIF blocks and packs is that of IEC 61834 and SMPTE ST 314, checked on
// frames of cameras. A frame can be damaged in any part, so each fact is the value that occurs most
// in it.
#pragma once

#include <cstdint>
#include <optional>

#include "foundation/ByteReader.h"
#include "xmp/NativeValues.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::xmp {

struct DVFacts {
  // From the kind of the frame, always there.
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

// The facts of the frame that begins at the first byte of `bytes`. The frame may be cut short: what
// is there counts. Nothing if no DV frame begins there. Raises nothing.
std::optional<DVFacts> ReadDVFrame(foundation::ByteReader bytes);

// Stores the facts as properties. Duration isn't one of them: the container knows it.
void SetDVFacts(const DVFacts& facts, TXMPMeta& meta);

}  // namespace Sorvik::xmp
