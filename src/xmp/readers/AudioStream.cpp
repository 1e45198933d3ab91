// SPDX-License-Identifier: MIT
#include "xmp/readers/AudioStream.h"

#include <array>
#include <iterator>

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

enum Type : std::uint8_t { kMPEG1 = 0x03, kMPEG2 = 0x04, kAAC = 0x0F, kLPCM = 0x80, kAC3 = 0x81 };
constexpr std::uint32_t kHDMV = 0x48444D56;

constexpr std::uint32_t kAC3Rates[] = {48000, 44100, 32000};
constexpr unsigned kAC3Channels[] = {2, 1, 2, 3, 3, 4, 4, 5};

// Sync 0B77, crc 16, rate 2, size 6, version 5, mode 3, channels 3, mix levels, LFE 1.
void ReadAC3(ByteReader bytes, AudioFacts& facts) {
  for (std::uint64_t at = 0; bytes.Holds(at, 8); ++at) {
    if (bytes.U16BE(at) != 0x0B77) continue;
    const unsigned code = bytes.U8(at + 4).value_or(0) >> 6;
    const unsigned version = bytes.U8(at + 5).value_or(0) >> 3;
    if (code == 3 || version > 10) continue;
    const unsigned word = bytes.U16BE(at + 6).value_or(0);
    const unsigned mode = word >> 13;
    unsigned used = 3;
    if ((mode & 1) != 0 && mode != 1) used += 2;
    if ((mode & 4) != 0) used += 2;
    if (mode == 2) used += 2;
    const unsigned lfe = word >> (15 - used) & 1;
    facts.rate = kAC3Rates[code];
    facts.channels = kAC3Channels[mode] + lfe;
    return;
  }
}

void ReadAC3Descriptor(const std::array<std::uint8_t, 3>& bytes, AudioFacts& facts) {
  const unsigned rate = bytes[0] >> 5;
  const unsigned mode = bytes[2] >> 1 & 0x0F;
  if (rate >= std::size(kAC3Rates) || mode >= std::size(kAC3Channels)) return;
  facts.rate = kAC3Rates[rate];
  // The descriptor doesn't include the low-frequency channel; cameras record it with all other
  // five.
  facts.channels = mode == 7 ? 6 : kAC3Channels[mode];
}

// Each PES packet begins with size 16, channels 4, rate 4, depth 2.
void ReadLPCM(ByteReader bytes, AudioFacts& facts) {
  constexpr unsigned kChannels[] = {0, 1, 0, 2, 3, 3, 4, 4, 5, 6, 7, 8};
  constexpr unsigned kBits[] = {0, 16, 20, 24};
  const auto codes = bytes.U8(2);
  const auto depth = bytes.U8(3);
  if (!codes || !depth) return;
  const unsigned channels = *codes >> 4;
  const unsigned rate = *codes & 0x0F;
  if (channels < std::size(kChannels)) facts.channels = kChannels[channels];
  facts.rate = rate == 1 ? 48000 : rate == 4 ? 96000 : rate == 5 ? 192000 : 0;
  facts.bits = kBits[*depth >> 6];
}

// Sync 11, version 2, layer 2, ..., bit rate 4, rate 2, padding 2, mode 2.
void ReadMPEG(ByteReader bytes, AudioFacts& facts) {
  constexpr std::uint32_t kRates[] = {44100, 48000, 32000};
  for (std::uint64_t at = 0; bytes.Holds(at, 4); ++at) {
    const std::uint32_t word = bytes.U32BE(at).value_or(0);
    const unsigned version = word >> 19 & 3;  // 3 MPEG-1, 2 MPEG-2, 0 MPEG-2.5
    const unsigned rate = word >> 10 & 3;
    if (word >> 21 != 0x7FF || version == 1 || (word >> 17 & 3) == 0 || rate == 3) continue;
    facts.rate = kRates[rate] >> (version == 3 ? 0 : version == 2 ? 1 : 2);
    facts.channels = (word >> 6 & 3) == 3 ? 1 : 2;
    return;
  }
}

// ADTS: sync 12, version 1, layer 2, no CRC 1, profile 2, rate 4, private 1, channels 3.
void ReadAAC(ByteReader bytes, AudioFacts& facts) {
  constexpr std::uint32_t kRates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                      22050, 16000, 12000, 11025, 8000,  7350};
  for (std::uint64_t at = 0; bytes.Holds(at, 4); ++at) {
    const std::uint32_t word = bytes.U32BE(at).value_or(0);
    const unsigned rate = word >> 10 & 0x0F;
    const unsigned channels = word >> 6 & 7;
    if (word >> 20 != 0xFFF || (word >> 17 & 3) != 0 || rate >= std::size(kRates)) continue;
    facts.rate = kRates[rate];
    facts.channels = channels == 7 ? 8 : channels;
    return;
  }
}

}  // namespace

bool IsAudioType(std::uint8_t type, std::uint32_t registration) {
  // With other registrations, type 80 is private data.
  if (type == kLPCM) return registration == kHDMV;
  return type == kMPEG1 || type == kMPEG2 || type == kAAC || type == kAC3;
}

AudioFacts ReadAudio(const ts::Stream& stream, const ts::Elementary& part) {
  AudioFacts facts;
  const ByteReader bytes(part.bytes);
  switch (stream.type) {
    case kAC3:
      facts.compressor = "AC3";
      ReadAC3(bytes, facts);
      if (facts.rate == 0 && stream.ac3) ReadAC3Descriptor(*stream.ac3, facts);
      break;
    case kLPCM:
      facts.compressor = "PCM";
      ReadLPCM(bytes, facts);
      break;
    case kMPEG1:
    case kMPEG2:
      facts.compressor = "MPEG";
      ReadMPEG(bytes, facts);
      break;
    case kAAC:
      facts.compressor = "AAC";
      ReadAAC(bytes, facts);
      break;
    default:
      break;
  }
  return facts;
}

}  // namespace Sorvik::xmp
