// SPDX-License-Identifier: MIT
#include <iterator>

#include "xmp/readers/VideoStream.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

enum StartCode : unsigned { kSequenceHeader = 0xB3, kExtension = 0xB5, kGroup = 0xB8 };
enum ExtensionId : unsigned { kSequenceExtension = 1, kPictureExtension = 8 };

// 6.3.3: frame_rate_code.
constexpr Rate kRates[] = {{},      {24000, 1001}, {24, 1},       {25, 1}, {30000, 1001},
                           {30, 1}, {50, 1},       {60000, 1001}, {60, 1}};

// 12 bits width, 12 height, 4 aspect, 4 rate.
void ReadSequenceHeader(ByteReader bytes, VideoFacts& facts) {
  const auto sizes = bytes.U24BE(0);
  const auto codes = bytes.U8(3);
  if (!sizes || !codes) return;
  facts.width = *sizes >> 12;
  facts.height = *sizes & 0x0FFF;
  const unsigned rate = *codes & 0x0Fu;
  if (rate < std::size(kRates)) facts.rate = kRates[rate];
  // Display aspect ratios, except code 1: square samples.
  const unsigned aspect = *codes >> 4;
  constexpr std::uint32_t kPicture[5][2] = {{0, 0}, {0, 0}, {4, 3}, {16, 9}, {221, 100}};
  if (aspect == 1) {
    facts.aspectWidth = facts.aspectHeight = 1;
  } else if (aspect < std::size(kPicture)) {
    facts.aspectWidth = std::uint64_t{kPicture[aspect][0]} * facts.height;
    facts.aspectHeight = std::uint64_t{kPicture[aspect][1]} * facts.width;
  }
}

// id 4, profile and level 8, progressive 1, chroma 2, sizes 2 + 2, bit rate 12, marker, buffer 8,
// low delay 1, n 2, d 5.
void ReadSequenceExtension(ByteReader bytes, VideoFacts& facts, bool& progressive) {
  const auto second = bytes.U8(1);
  const auto third = bytes.U8(2);
  const auto last = bytes.U8(5);
  if (!second || !third || !last) return;
  progressive = (*second & 0x08) != 0;
  facts.width |= (*second & 0x01u) << 13 | (*third & 0x80u) << 5;
  facts.height |= (*third & 0x60u) << 7;
  const std::uint64_t n = (*last >> 5 & 3u) + 1;
  const std::uint64_t d = (*last & 0x1Fu) + 1;
  facts.rate = Normalise({facts.rate.num * n, facts.rate.den * d});
}

// id 4, f codes 16, dc 2, structure 2, top field first 1.
void ReadPictureExtension(ByteReader bytes, VideoFacts& facts) {
  const auto third = bytes.U8(2);
  const auto fourth = bytes.U8(3);
  if (!third || !fourth || facts.fieldOrder != nullptr) return;
  const unsigned structure = *third & 0x03u;
  const bool topFirst = structure == 3 ? (*fourth & 0x80) != 0 : structure == 1;
  facts.fieldOrder = topFirst ? "Upper" : "Lower";
}

// Drop 1, hours 5, minutes 6, marker 1, seconds 6, pictures 6.
void ReadGroup(ByteReader bytes, VideoFacts& facts) {
  const auto code = bytes.U32BE(0);
  if (!code || facts.gopTimecode) return;
  Timecode timecode;
  timecode.drop = (*code >> 31) != 0;
  timecode.hours = *code >> 26 & 0x1F;
  timecode.minutes = *code >> 20 & 0x3F;
  timecode.seconds = *code >> 13 & 0x3F;
  timecode.frames = *code >> 7 & 0x3F;
  if (timecode.hours > 23 || timecode.minutes > 59 || timecode.seconds > 59) return;
  facts.gopTimecode = timecode;
}

}  // namespace

std::uint64_t FindStartCode(ByteReader stream, std::uint64_t from) noexcept {
  const auto bytes = stream.Bytes();
  // The third byte determines how far the next start code can be.
  for (std::size_t at = from; at + 2 < bytes.size();) {
    const std::byte third = bytes[at + 2];
    if (third > std::byte{1}) {
      at += 3;
    } else if (third == std::byte{1} && bytes[at] == std::byte{0} &&
               bytes[at + 1] == std::byte{0}) {
      return at;
    } else {
      ++at;
    }
  }
  return stream.Size();
}

VideoFacts ReadMPEG2(ByteReader stream) {
  VideoFacts facts;
  bool sequence = false;
  bool progressive = false;
  for (auto at = FindStartCode(stream, 0); at < stream.Size(); at = FindStartCode(stream, at + 3)) {
    const unsigned code = stream.U8(at + 3).value_or(0);
    const ByteReader data = stream.Clip(at + 4, 16);
    if (code == kSequenceHeader && facts.width == 0) ReadSequenceHeader(data, facts);
    if (code == kGroup) ReadGroup(data, facts);
    if (code != kExtension || facts.width == 0) continue;
    const unsigned id = data.U8(0).value_or(0) >> 4;
    if (id == kSequenceExtension && !sequence) {
      sequence = true;
      ReadSequenceExtension(data, facts, progressive);
    }
    if (id == kPictureExtension) {
      ReadPictureExtension(data, facts);
      break;  // everything needed precedes the first picture
    }
  }
  if (progressive) facts.fieldOrder = "Progressive";
  return facts;
}

}  // namespace Sorvik::xmp
