// SPDX-License-Identifier: MIT
// MPEG-2 transport streams (ISO/IEC 13818-1): packets of 188 bytes, or of 192 with an arrival time
// in front as in AVCHD and Blu-ray; programs, and parts of elementary streams.
//
// Works on one piece of a file at a time. Packets without a sync byte are skipped.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "foundation/ByteReader.h"

namespace Sorvik::formats::ts {

using foundation::ByteReader;

struct Layout {
  std::uint64_t start = 0;   // offset of the first complete packet's sync byte in the file
  std::uint64_t stride = 0;  // 188 or 192
};
// Detects the packet layout. Returns nullopt if the head isn't a transport stream. A file may start
// in the middle of a packet.
std::optional<Layout> FindLayout(ByteReader head);

inline constexpr std::uint16_t kNoPID = 0xFFFF;

struct Stream {
  std::uint8_t type = 0;
  std::uint16_t pid = kNoPID;
  // From the HDMV registration descriptor: coding type, format and rate (4 bits each). 0 if there
  // is none.
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

// A part of an elementary stream, assembled from the packets of its PID.
struct Elementary {
  std::vector<std::byte> bytes;             // without the PES headers
  std::vector<std::uint64_t> starts;        // offsets in `bytes` at which PES packets begin
  std::vector<std::uint64_t> presentation;  // time stamps in file order, 90 kHz, 33 bits
  // The decoding time of each of them; the same where the stream has no other.
  std::vector<std::uint64_t> decoding;
};

// Iterates over the packets of a piece of the file. `offset` is the position of the piece in the
// file.
class Packets {
 public:
  Packets(ByteReader piece, const Layout& layout, std::uint64_t offset);

  struct Packet {
    std::uint16_t pid = kNoPID;
    bool unitStart = false;
    ByteReader payload;
  };
  // Returns the next packet with a payload; nullopt at the end.
  std::optional<Packet> Next();

 private:
  ByteReader piece_;
  std::uint64_t at_ = 0;
  std::uint64_t stride_;
};

// Returns the first program that has a video or audio stream of a known type; empty if there is
// none.
Program FindProgram(ByteReader piece, const Layout& layout);

// Collects the parts of a stream in a piece, at most `maxBytes` bytes. With `timesOnly` only the
// time stamps.
Elementary Collect(ByteReader piece, const Layout& layout, std::uint64_t offset, std::uint16_t pid,
                   std::size_t maxBytes, bool timesOnly = false);

// The presentation times of the video in a piece, of whatever program, in file order.
std::vector<std::uint64_t> VideoTimes(ByteReader piece, const Layout& layout, std::uint64_t offset);

}  // namespace Sorvik::formats::ts
