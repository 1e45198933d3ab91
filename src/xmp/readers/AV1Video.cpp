// SPDX-License-Identifier: MIT
// The sequence header of AV1 (AV1 Bitstream & Decoding Process Specification, 5.3 and 5.5).
#include "xmp/readers/BitReader.h"
#include "xmp/readers/VideoStream.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

constexpr unsigned kSequenceHeader = 1;

// A number of up to 8 bytes with 7 bits each, least significant first.
std::uint64_t ReadSize(ByteReader bytes, std::uint64_t& at) {
  constexpr unsigned kMaxBytes = 8;
  std::uint64_t size = 0;
  for (unsigned i = 0; i < kMaxBytes; ++i) {
    const unsigned byte = bytes.U8(at++).value_or(0);
    size |= std::uint64_t{byte & 0x7Fu} << (7 * i);
    if ((byte & 0x80) == 0) break;
  }
  return size;
}

// Returns the payload of the first sequence header; empty if there is none.
ByteReader FindSequenceHeader(ByteReader units) {
  std::uint64_t at = 0;
  while (at < units.Size()) {
    const unsigned header = units.U8(at++).value_or(0);
    if ((header & 0x04) != 0) ++at;  // extension
    const bool sized = (header & 0x02) != 0;
    const std::uint64_t size = sized ? ReadSize(units, at) : units.Size() - at;
    if ((header >> 3 & 0x0F) == kSequenceHeader) return units.Clip(at, size);
    if (size > units.Size()) break;
    at += size;
  }
  return ByteReader();
}

// Timing, decoder model and operating points.
void SkipOperatingPoints(BitReader& bits) {
  bool model = false;
  unsigned delayBits = 0;
  if (bits.Flag()) {  // timing
    bits.Skip(64);
    if (bits.Flag()) bits.Unsigned();  // equal picture interval
    model = bits.Flag();
    if (model) {
      delayBits = bits.Bits(5) + 1;
      bits.Skip(32 + 10);
    }
  }
  const bool displayDelay = bits.Flag();
  const unsigned points = bits.Bits(5) + 1;
  for (unsigned i = 0; i < points && bits.Good(); ++i) {
    bits.Skip(12);
    if (bits.Bits(5) > 7) bits.Skip(1);  // level, tier
    if (model && bits.Flag()) bits.Skip(2 * delayBits + 1);
    if (displayDelay && bits.Flag()) bits.Skip(4);
  }
}

// Coding tools, from the super-block size to the loop restoration.
void SkipTools(BitReader& bits, bool reduced) {
  bits.Skip(3);
  if (!reduced) {
    bits.Skip(4);
    const bool orderHint = bits.Flag();
    if (orderHint) bits.Skip(2);
    const bool screenContent = bits.Flag() || bits.Flag();  // chosen per frame, or always
    if (screenContent && !bits.Flag()) bits.Skip(1);        // integer motion vectors
    if (orderHint) bits.Skip(3);
  }
  bits.Skip(3);
}

}  // namespace

VideoFacts ReadAV1(ByteReader units) {
  VideoFacts facts;
  BitReader bits(FindSequenceHeader(units));
  const unsigned profile = bits.Bits(3);
  bits.Skip(1);
  const bool reduced = bits.Flag();
  if (reduced) {
    bits.Skip(5);
  } else {
    SkipOperatingPoints(bits);
  }
  const unsigned widthBits = bits.Bits(4) + 1;
  const unsigned heightBits = bits.Bits(4) + 1;
  const std::uint32_t width = bits.Bits(widthBits) + 1;
  const std::uint32_t height = bits.Bits(heightBits) + 1;
  if (!reduced && bits.Flag()) bits.Skip(7);  // frame ids
  SkipTools(bits, reduced);
  const bool high = bits.Flag();
  const bool twelve = profile == 2 && high && bits.Flag();
  if (profile != 1) bits.Skip(1);  // monochrome
  const bool described = bits.Flag();
  const unsigned primaries = described ? bits.Bits(8) : 0;
  bits.Skip(described ? 8 : 0);
  const unsigned matrix = described ? bits.Bits(8) : 0;
  if (!bits.Good()) return facts;
  facts.width = width;
  facts.height = height;
  facts.depth = high ? (twelve ? 12 : 10) : 8;
  facts.primaries = primaries;
  facts.matrix = matrix;
  facts.fieldOrder = "Progressive";  // the codec has no fields
  return facts;
}

}  // namespace Sorvik::xmp
