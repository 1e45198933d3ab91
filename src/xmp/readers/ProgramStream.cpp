// SPDX-License-Identifier: MIT
#include "xmp/readers/ProgramStream.h"

#include "xmp/readers/VideoStream.h"

namespace Sorvik::xmp::ps {

namespace {

enum StartCode : std::uint8_t { kPack = 0xBA, kPrivate = 0xBD };

constexpr std::uint64_t kStartCode = 4;

// The five bytes of a time stamp: 4 bits, 3 of the time, marker, 15, marker, 15, marker.
std::optional<std::uint64_t> TimeStamp(ByteReader bytes, std::uint64_t at) {
  const auto high = bytes.U8(at);
  const auto middle = bytes.U16BE(at + 1);
  const auto low = bytes.U16BE(at + 3);
  if (!high || !middle || !low) return std::nullopt;
  return std::uint64_t{*high >> 1 & 7u} << 30 | std::uint64_t{*middle >> 1 & 0x7FFFu} << 15 |
         (*low >> 1 & 0x7FFFu);
}

// MPEG-2: '10' and flags, time stamp flags, length of the header, header.
void ReadHeader2(ByteReader body, Packet& packet) {
  if ((body.U8(1).value_or(0) & 0x80) != 0) packet.presentation = TimeStamp(body, 3);
  packet.payload = body.Clip(3 + std::uint64_t{body.U8(2).value_or(0)});
}

// MPEG-1: up to 16 bytes of stuffing, '01' and the buffer size in two bytes, time stamps.
void ReadHeader1(ByteReader body, Packet& packet) {
  constexpr std::uint64_t kMaxStuffing = 16;
  std::uint64_t at = 0;
  while (at < kMaxStuffing && body.U8(at) == 0xFF) ++at;
  if ((body.U8(at).value_or(0) & 0xC0) == 0x40) at += 2;
  const unsigned stamps = body.U8(at).value_or(0) >> 4;
  if (stamps == 2 || stamps == 3) packet.presentation = TimeStamp(body, at);
  packet.payload = body.Clip(at + (stamps == 3 ? 10 : stamps == 2 ? 5 : 1));
}

// The stream's number, number of frames in the packet, offset of the first; of LPCM three bytes
// more, which are kept.
void ReadPrivateHeader(Packet& packet) {
  constexpr std::uint64_t kHeader = 4;
  packet.privateStream = packet.payload.U8(0).value_or(0);
  packet.payload = packet.payload.Clip(kHeader);
}

}  // namespace

bool IsProgramStream(ByteReader head) {
  if (head.U32BE(0) != (0x100u | kPack)) return false;
  // '01' of MPEG-2, '0010' of MPEG-1.
  const unsigned first = head.U8(kStartCode).value_or(0);
  return first >> 6 == 1 || first >> 4 == 2;
}

Packets::Packets(ByteReader piece) : piece_(piece) {
  while (at_ < piece_.Size() && !IsProgramStream(piece_.Clip(at_))) {
    at_ = FindStartCode(piece_, at_ + 1);
  }
}

std::optional<Packet> Packets::Next() {
  for (at_ = FindStartCode(piece_, at_); piece_.Holds(at_, kStartCode + 2);
       at_ = FindStartCode(piece_, at_)) {
    const std::uint8_t code = piece_.U8(at_ + 3).value_or(0);
    if (code <= kPack) {
      at_ += kStartCode;  // of a pack header, or inside a packet of another length
      continue;
    }
    const std::uint64_t length = piece_.U16BE(at_ + kStartCode).value_or(0);
    const ByteReader body = piece_.Clip(at_ + kStartCode + 2, length);
    at_ += kStartCode + 2 + length;
    if (code != kPrivate && !IsVideo(code) && !IsMPEGAudio(code)) continue;
    Packet packet;
    packet.stream = code;
    if (body.U8(0).value_or(0) >> 6 == 2) {
      ReadHeader2(body, packet);
    } else {
      ReadHeader1(body, packet);
    }
    if (code == kPrivate) ReadPrivateHeader(packet);
    return packet;
  }
  return std::nullopt;
}

}  // namespace Sorvik::xmp::ps
