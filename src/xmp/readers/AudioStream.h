// SPDX-License-Identifier: MIT
// Facts of the first frame of an elementary audio stream: AC-3 (ATSC A/52), LPCM of AVCHD and
// Blu-ray, MPEG audio (ISO/IEC 11172-3), AAC (ISO/IEC 13818-7, 6.2).
#pragma once

#include <cstdint>

#include "formats/TransportStream.h"
#include "foundation/ByteReader.h"

namespace Sorvik::xmp {

namespace ts = formats::ts;

struct AudioFacts {
  const char* compressor = nullptr;  // null: unknown stream type
  std::uint32_t rate = 0;
  unsigned bits = 0;  // 0: compressed
  unsigned channels = 0;
};

// True for the audio stream types that ReadAudio supports in a program with that registration.
bool IsAudioType(std::uint8_t type, std::uint32_t registration);

// `part` holds the beginning of the stream; it may be empty if that wasn't found. Facts missing
// from both `part` and the program's stream description stay 0.
AudioFacts ReadAudio(const ts::Stream& stream, const ts::Elementary& part);

}  // namespace Sorvik::xmp
