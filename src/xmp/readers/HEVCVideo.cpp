// SPDX-License-Identifier: MIT
// The sequence parameter set of H.265 (ITU-T H.265, 7.3.2.2, 7.3.3, 7.3.4, 7.3.7 and E.2.1).
#include <algorithm>

#include "xmp/readers/NalUnits.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

constexpr unsigned kSPS = 33;
constexpr std::uint64_t kNalHeader = 2;
constexpr std::uint32_t kMaxSide = 65'536;
constexpr int kMaxNals = 1000;

// The flags for progressive and interlaced sources are the only part that is kept.
bool ReadProfile(BitReader& bits, unsigned subLayers) {
  bits.Skip(8 + 32);
  const bool progressive = bits.Flag();
  const bool interlaced = bits.Flag();
  bits.Skip(46 + 8);
  unsigned skip = 0;
  for (unsigned i = 0; i < subLayers; ++i) {
    if (bits.Flag()) skip += 88;
    if (bits.Flag()) skip += 8;
  }
  if (subLayers > 0) bits.Skip(2 * (8 - subLayers));
  bits.Skip(skip);
  return progressive && !interlaced;
}

void SkipScalingLists(BitReader& bits) {
  for (unsigned size = 0; size < 4 && bits.Good(); ++size) {
    for (unsigned matrix = 0; matrix < 6; matrix += size == 3 ? 3 : 1) {
      if (!bits.Flag()) {
        bits.Unsigned();
        continue;
      }
      const unsigned count = std::min(64u, 1u << (4 + 2 * size));
      if (size > 1) bits.Signed();
      for (unsigned i = 0; i < count && bits.Good(); ++i) bits.Signed();
    }
  }
}

// Returns false if the set is invalid, or predicted from another one.
bool SkipReferenceSet(BitReader& bits, bool first) {
  constexpr std::uint32_t kMaxPictures = 16;
  if (!first && bits.Flag()) return false;
  const std::uint32_t negative = bits.Unsigned();
  const std::uint32_t positive = bits.Unsigned();
  if (negative > kMaxPictures || positive > kMaxPictures) return false;
  for (std::uint32_t i = 0; i < negative + positive && bits.Good(); ++i) {
    bits.Unsigned();
    bits.Skip(1);
  }
  return bits.Good();
}

// Coding tools, between the bit depths and the usability information. Returns false if what follows
// can't be found.
bool SkipTools(BitReader& bits, unsigned subLayers) {
  constexpr std::uint32_t kMaxSets = 64;
  const std::uint32_t orderBits = bits.Unsigned() + 4;
  const unsigned layers = bits.Flag() ? subLayers + 1 : 1;
  for (unsigned i = 0; i < 3 * layers + 6; ++i) bits.Unsigned();
  if (bits.Flag() && bits.Flag()) SkipScalingLists(bits);
  bits.Skip(2);
  if (bits.Flag()) {  // PCM
    bits.Skip(8);
    bits.Unsigned();
    bits.Unsigned();
    bits.Skip(1);
  }
  const std::uint32_t sets = bits.Unsigned();
  if (sets > kMaxSets || orderBits > 16) return false;
  for (std::uint32_t i = 0; i < sets; ++i) {
    if (!SkipReferenceSet(bits, i == 0)) return false;
  }
  if (bits.Flag()) {  // long-term references
    const std::uint32_t count = bits.Unsigned();
    if (count > 32) return false;
    bits.Skip(count * (orderBits + 1));
  }
  bits.Skip(2);
  return bits.Good();
}

void ReadUsability(BitReader& bits, VideoFacts& facts) {
  ReadVideoDescription(bits, facts);
  bits.Skip(3);
  if (bits.Flag()) {  // default display window
    for (int i = 0; i < 4; ++i) bits.Unsigned();
  }
  if (!bits.Flag()) return;
  const std::uint64_t units = bits.Bits(32);
  const std::uint64_t scale = bits.Bits(32);
  if (bits.Good()) facts.rate = Normalise({scale, units});
}

}  // namespace

VideoFacts ReadHEVCSequence(ByteReader nal) {
  VideoFacts facts;
  if ((nal.U8(0).value_or(0) >> 1 & 0x3Fu) != kSPS) return facts;
  const auto payload = RemoveEmulationPrevention(nal.Clip(kNalHeader, kMaxNalBytes));
  BitReader bits{ByteReader(payload)};
  bits.Skip(4);
  const unsigned subLayers = bits.Bits(3);
  bits.Skip(1);
  const bool progressive = ReadProfile(bits, subLayers);
  bits.Unsigned();
  const std::uint32_t chroma = bits.Unsigned();
  if (chroma == 3) bits.Skip(1);
  const std::uint32_t width = bits.Unsigned();
  const std::uint32_t height = bits.Unsigned();
  std::uint64_t cropX = 0;
  std::uint64_t cropY = 0;
  if (bits.Flag()) {
    cropX = std::uint64_t{bits.Unsigned()} + bits.Unsigned();
    cropY = std::uint64_t{bits.Unsigned()} + bits.Unsigned();
  }
  cropX *= chroma == 1 || chroma == 2 ? 2 : 1;
  cropY *= chroma == 1 ? 2 : 1;
  const std::uint32_t depth = bits.Unsigned() + 8;
  bits.Unsigned();
  if (!bits.Good() || width > kMaxSide || height > kMaxSide || depth > 16) return facts;
  if (cropX >= width || cropY >= height) return facts;
  facts.width = static_cast<std::uint32_t>(width - cropX);
  facts.height = static_cast<std::uint32_t>(height - cropY);
  facts.depth = depth;
  if (progressive) facts.fieldOrder = "Progressive";
  if (SkipTools(bits, subLayers) && bits.Flag()) ReadUsability(bits, facts);
  return facts;
}

VideoFacts ReadHEVC(ByteReader stream) {
  constexpr std::uint64_t kStartCode = 3;
  std::uint64_t at = FindStartCode(stream, 0);
  for (int i = 0; i < kMaxNals && at < stream.Size(); ++i) {
    const std::uint64_t begin = at + kStartCode;
    at = FindStartCode(stream, begin);
    const auto facts = ReadHEVCSequence(stream.Clip(begin, at - begin));
    if (facts.width != 0) return facts;
  }
  return VideoFacts();
}

}  // namespace Sorvik::xmp
