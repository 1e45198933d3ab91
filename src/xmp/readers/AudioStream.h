// SPDX-License-Identifier: MIT
// What the first frame of an elementary audio stream tells: AC-3 (ATSC A/52), LPCM of AVCHD and
// Blu-ray, MPEG audio (ISO/IEC 11172-3).
#pragma once

#include <cstdint>

#include "foundation/ByteReader.h"
#include "xmp/readers/TransportStream.h"

namespace Sorvik::xmp {

struct AudioFacts {
  const char* compressor = nullptr;  // null: no known stream
  std::uint32_t rate = 0;
  unsigned bits = 0;  // 0: compressed
  unsigned channels = 0;
};

// True for the types of audio that ReadAudio knows, in a program with that registration.
bool IsAudioType(std::uint8_t type, std::uint32_t registration);

// `part` holds the beginning of the stream, or nothing where that lies further on; what neither it
// nor the program's description of the stream shows stays 0.
AudioFacts ReadAudio(const ts::Stream& stream, const ts::Elementary& part);

}  // namespace Sorvik::xmp
