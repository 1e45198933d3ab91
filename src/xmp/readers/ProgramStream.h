// SPDX-License-Identifier: MIT
// MPEG program streams: the packets of the elementary streams of DVDs (.vob), hard-disk cameras
// (.mod) and MPEG files (.mpg).
// Facts: ISO/IEC 13818-1, 2.4.3.6 and 2.5, and ISO/IEC 11172-1, 2.4.3; the private streams of DVD.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "foundation/ByteReader.h"

namespace Sorvik::xmp::ps {

using foundation::ByteReader;

// True if the bytes begin with a pack header.
bool IsProgramStream(ByteReader head);

struct Packet {
  std::uint8_t stream = 0;         // 0xE0 to 0xEF video, 0xC0 to 0xDF MPEG audio, 0xBD private
  std::uint8_t privateStream = 0;  // the first byte of a private stream: 0x80 AC-3, 0xA0 LPCM
  std::optional<std::uint64_t> presentation;  // 90 kHz, 33 bits
  ByteReader payload;  // without the header of a private stream; truncated at the end of the piece
};

// Iterates over the packets of a piece of the file, from its first pack header on.
class Packets {
 public:
  explicit Packets(ByteReader piece);
  // Returns the next packet of a stream; nullopt at the end.
  std::optional<Packet> Next();

 private:
  ByteReader piece_;
  std::uint64_t at_ = 0;
};

constexpr bool IsVideo(std::uint8_t stream) noexcept { return stream >> 4 == 0xE; }
constexpr bool IsMPEGAudio(std::uint8_t stream) noexcept { return stream >> 5 == 6; }
constexpr bool IsAC3(const Packet& packet) noexcept { return packet.privateStream >> 3 == 0x10; }
constexpr bool IsLPCM(const Packet& packet) noexcept { return packet.privateStream >> 3 == 0x14; }

}  // namespace Sorvik::xmp::ps
