// SPDX-License-Identifier: MIT
// MPEG-2 transport streams (ISO/IEC 13818-1): packets of 188 bytes, or of 192 with an arrival time
// in front as AVCHD and Blu-ray write them; programs, and the parts of elementary streams.
//
// Works on a piece of a file at a time. A packet that doesn't begin as one is passed over.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "foundation/ByteReader.h"

namespace Sorvik::xmp::ts {

using foundation::ByteReader;

struct Layout {
  std::uint64_t start = 0;   // offset of the first whole packet's sync byte in the file
  std::uint64_t stride = 0;  // 188 or 192
};
// How the packets lie; nothing if the head isn't a transport stream. A file that begins inside a
// packet is understood.
std::optional<Layout> FindLayout(ByteReader head);

inline constexpr std::uint16_t kNoPID = 0xFFFF;

struct Stream {
  std::uint8_t type = 0;
  std::uint16_t pid = kNoPID;
  // Of the HDMV registration descriptor, 0 if there is none: coding type, format and rate nibbles.
  std::uint8_t coding = 0;
  std::uint8_t formatAndRate = 0;
  // The first bytes of the AC-3 audio descriptor (ATSC A/52, annex A): rate 3 bits, version 5, bit
  // rate 6, surround 2, mode 3, channels 4, service 1.
  std::optional<std::array<std::uint8_t, 3>> ac3;
};

struct Program {
  std::uint32_t registration = 0;  // "HDMV", "TSHV"; 0 if there is none
  std::vector<Stream> streams;
};

// A part of an elementary stream, put together from the packets of its PID.
struct Elementary {
  std::vector<std::byte> bytes;             // without the PES headers
  std::vector<std::uint64_t> starts;        // offsets in `bytes` at which PES packets begin
  std::vector<std::uint64_t> presentation;  // time stamps in order of the file, 90 kHz, 33 bits
};

// Hands out each packet of a piece of the file. `offset` is where the piece begins in the file.
class Packets {
 public:
  Packets(ByteReader piece, const Layout& layout, std::uint64_t offset);

  struct Packet {
    std::uint16_t pid = kNoPID;
    bool unitStart = false;
    ByteReader payload;
  };
  // The next packet with a payload; nothing at the end.
  std::optional<Packet> Next();

 private:
  ByteReader piece_;
  std::uint64_t at_ = 0;
  std::uint64_t stride_;
};

// The first program that has a video or audio stream of a known type; empty if there is none.
Program FindProgram(ByteReader piece, const Layout& layout);

// The parts of a stream in a piece, at most `most` bytes. With `timesOnly` just the time stamps.
Elementary Collect(ByteReader piece, const Layout& layout, std::uint64_t offset, std::uint16_t pid,
                   std::size_t most, bool timesOnly = false);

}  // namespace Sorvik::xmp::ts
