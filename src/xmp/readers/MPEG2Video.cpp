// SPDX-License-Identifier: MIT
#include <algorithm>
#include <iterator>
#include <limits>

#include "xmp/readers/VideoStream.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

enum StartCode : unsigned {
  kPicture = 0x00,
  kSequenceHeader = 0xB3,
  kExtension = 0xB5,
  kGroup = 0xB8
};
enum ExtensionId : unsigned { kSequenceExtension = 1, kPictureExtension = 8 };

// 6.3.3: frame_rate_code.
constexpr Rate kRates[] = {{},      {24000, 1001}, {24, 1},       {25, 1}, {30000, 1001},
                           {30, 1}, {50, 1},       {60000, 1001}, {60, 1}};

// 12 bits width, 12 height, 4 aspect, 4 rate.
void ReadSequenceHeader(ByteReader bytes, VideoFacts& facts, unsigned& aspect) {
  const auto sizes = bytes.U24BE(0);
  const auto codes = bytes.U8(3);
  if (!sizes || !codes) return;
  facts.width = *sizes >> 12;
  facts.height = *sizes & 0x0FFF;
  const unsigned rate = *codes & 0x0Fu;
  if (rate < std::size(kRates)) facts.rate = kRates[rate];
  aspect = *codes >> 4;
}

// Display aspect ratios, except code 1: square samples.
void SetAspect(unsigned aspect, VideoFacts& facts) {
  constexpr std::uint32_t kPicture[5][2] = {{0, 0}, {0, 0}, {4, 3}, {16, 9}, {221, 100}};
  if (aspect == 1) {
    facts.aspectWidth = facts.aspectHeight = 1;
  } else if (aspect < std::size(kPicture)) {
    facts.aspectWidth = std::uint64_t{kPicture[aspect][0]} * facts.height;
    facts.aspectHeight = std::uint64_t{kPicture[aspect][1]} * facts.width;
  }
}

// ISO/IEC 11172-2, 2.4.3.2: height of a sample divided by its width, in units of 1/10000.
void SetMPEG1Aspect(unsigned aspect, VideoFacts& facts) {
  constexpr unsigned kWidth = 10000;
  constexpr unsigned kHeights[] = {0,    10000, 6735,  7031,  7615,  8055,  8437, 8935,
                                   9157, 9815,  10255, 10695, 10950, 11575, 12015};
  if (aspect == 0 || aspect >= std::size(kHeights)) return;
  facts.aspectWidth = kWidth;
  facts.aspectHeight = kHeights[aspect];
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

// id 4, f codes 16, dc 2, structure 2, top field first 1, ..., progressive frame 1.
void ReadPictureExtension(ByteReader bytes, VideoFacts& facts) {
  const auto third = bytes.U8(2);
  const auto fourth = bytes.U8(3);
  const auto fifth = bytes.U8(4);
  if (!third || !fourth || !fifth || facts.fieldOrder != nullptr) return;
  if ((*fifth & 0x80) != 0) {
    facts.fieldOrder = "Progressive";  // both fields are of the same time
    return;
  }
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
  bool picture = false;
  bool progressive = false;
  unsigned aspect = 0;
  for (auto at = FindStartCode(stream, 0); at < stream.Size(); at = FindStartCode(stream, at + 3)) {
    const unsigned code = stream.U8(at + 3).value_or(0);
    const ByteReader data = stream.Clip(at + 4, 16);
    if (code == kSequenceHeader && facts.width == 0) {
      ReadSequenceHeader(data, facts, aspect);
    }
    if (code == kPicture && facts.width != 0) picture = true;
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
  facts.mpeg1 = picture && !sequence;
  if (facts.mpeg1) {
    SetMPEG1Aspect(aspect, facts);
  } else {
    SetAspect(aspect, facts);
  }
  if (progressive || facts.mpeg1) facts.fieldOrder = "Progressive";
  return facts;
}

std::optional<std::uint64_t> CountFrames(const std::vector<std::uint64_t>& first,
                                         const std::vector<std::uint64_t>& last, Rate rate) {
  if (first.empty() || last.empty() || !rate.Known()) return std::nullopt;
  const std::uint64_t base = first.front();
  const auto since = [base](std::uint64_t time) {
    constexpr std::int64_t kWrap = std::int64_t{1} << 33;
    const auto delta = static_cast<std::int64_t>((time - base) & (kWrap - 1));
    return delta >= kWrap / 2 ? delta - kWrap : delta;
  };
  std::int64_t begin = 0;
  for (const std::uint64_t time : first) begin = std::min(begin, since(time));
  std::int64_t end = std::numeric_limits<std::int64_t>::min();
  for (const std::uint64_t time : last) end = std::max(end, since(time));
  if (end < begin) return std::nullopt;
  // Fields may have separate packets: half a frame more is not a further frame.
  const double frames = static_cast<double>(end - begin) / 90000 * static_cast<double>(rate.num) /
                        static_cast<double>(rate.den);
  return static_cast<std::uint64_t>(frames + 0.25) + 1;
}

}  // namespace Sorvik::xmp
