// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>

#include "xmp/readers/NalUnits.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

enum NalType : unsigned { kSEI = 6, kSPS = 7 };
enum SEIType : unsigned { kPictureTiming = 1, kUserData = 5 };
enum ChromaFormat : std::uint32_t { k420 = 1, k422 = 2, k444 = 3 };

// The recording block is in the first pictures, or missing.
constexpr int kMaxNals = 20'000;

// UUID 17EE8C60-F84D-11D9-8CD6-0800200C9A66, then the name of the block.
constexpr std::string_view kRecordingBlock(
    "\x17\xEE\x8C\x60\xF8\x4D\x11\xD9\x8C\xD6\x08\x00\x20\x0C\x9A\x66MDPM", 20);

struct Sequence {
  bool good = false;
  bool progressive = false;
  bool delaysPresent = false;
  unsigned removalBits = 24;
  unsigned outputBits = 24;
  bool pictureStructure = false;
};

void SkipScalingLists(BitReader& bits, std::uint32_t chroma) {
  const int lists = chroma == k444 ? 12 : 8;
  for (int list = 0; list < lists && bits.Good(); ++list) {
    if (!bits.Flag()) continue;
    const int size = list < 6 ? 16 : 64;
    std::int64_t last = 8;
    std::int64_t next = 8;
    for (int i = 0; i < size && bits.Good(); ++i) {
      if (next != 0) next = (last + bits.Signed() + 256) % 256;
      if (next != 0) last = next;
    }
  }
}

void ReadHRD(BitReader& bits, Sequence& sequence) {
  const std::uint32_t count = bits.Unsigned() + 1;
  constexpr std::uint32_t kMaxSchedules = 32;
  if (count > kMaxSchedules) return;
  bits.Skip(8);
  for (std::uint32_t i = 0; i < count && bits.Good(); ++i) {
    bits.Unsigned();
    bits.Unsigned();
    bits.Skip(1);
  }
  bits.Skip(5);
  sequence.removalBits = bits.Bits(5) + 1;
  sequence.outputBits = bits.Bits(5) + 1;
  bits.Skip(5);
  sequence.delaysPresent = true;
}

void ReadVUI(BitReader& bits, VideoFacts& facts, Sequence& sequence) {
  ReadVideoDescription(bits, facts);
  if (bits.Flag()) {  // timing info: duration of a field, ticks per second
    const std::uint64_t unit = bits.Bits(32);
    const std::uint64_t scale = bits.Bits(32);
    bits.Skip(1);
    if (bits.Good()) facts.rate = Normalise({scale, 2 * unit});
  }
  const bool nal = bits.Flag();
  if (nal) ReadHRD(bits, sequence);
  const bool vcl = bits.Flag();
  if (vcl) ReadHRD(bits, sequence);
  if (nal || vcl) bits.Skip(1);
  sequence.pictureStructure = bits.Flag();
}

bool HasChromaFormat(std::uint32_t profile) {
  constexpr std::uint32_t kProfiles[] = {100, 110, 122, 244, 44, 83, 86, 118, 128};
  return std::ranges::find(kProfiles, profile) != std::end(kProfiles);
}

// Returns chroma_format_idc.
std::uint32_t ReadSampleFormat(BitReader& bits, VideoFacts& facts) {
  constexpr std::uint32_t kMaxExtraBits = 24;
  const std::uint32_t profile = bits.Bits(8);
  bits.Skip(16);
  bits.Unsigned();
  facts.depth = 8;
  if (!HasChromaFormat(profile)) return k420;
  const std::uint32_t chroma = bits.Unsigned();
  if (chroma == k444) bits.Skip(1);
  facts.depth = 8 + std::min<std::uint32_t>(bits.Unsigned(), kMaxExtraBits);
  bits.Unsigned();
  bits.Skip(1);
  if (bits.Flag()) SkipScalingLists(bits, chroma);
  return chroma;
}

void SkipPictureOrder(BitReader& bits) {
  const std::uint32_t order = bits.Unsigned();
  if (order == 0) bits.Unsigned();
  if (order == 1) {
    bits.Skip(1);
    bits.Signed();
    bits.Signed();
    const std::uint32_t cycle = bits.Unsigned();
    for (std::uint32_t i = 0; i < cycle && bits.Good(); ++i) bits.Signed();
  }
}

// Sets the size without the cropped borders. Returns false if it is invalid.
bool ReadFrameSize(BitReader& bits, std::uint32_t chroma, VideoFacts& facts, Sequence& sequence) {
  constexpr std::uint64_t kBlock = 16;  // samples
  constexpr std::uint64_t kMaxBlocks = 4096;
  const std::uint64_t columns = std::uint64_t{bits.Unsigned()} + 1;
  const std::uint64_t rows = std::uint64_t{bits.Unsigned()} + 1;
  sequence.progressive = bits.Flag();
  if (!sequence.progressive) bits.Skip(1);
  bits.Skip(1);
  std::uint64_t cropX = 0;
  std::uint64_t cropY = 0;
  if (bits.Flag()) {
    cropX = std::uint64_t{bits.Unsigned()} + bits.Unsigned();
    cropY = std::uint64_t{bits.Unsigned()} + bits.Unsigned();
  }
  if (!bits.Good() || columns > kMaxBlocks || rows > kMaxBlocks) return false;
  const std::uint64_t fields = sequence.progressive ? 1 : 2;
  const std::uint64_t unitX = chroma == k420 || chroma == k422 ? 2 : 1;
  const std::uint64_t unitY = (chroma == k420 ? 2 : 1) * fields;
  const std::uint64_t width = columns * kBlock;
  const std::uint64_t height = rows * kBlock * fields;
  if (cropX * unitX >= width || cropY * unitY >= height) return false;
  facts.width = static_cast<std::uint32_t>(width - cropX * unitX);
  facts.height = static_cast<std::uint32_t>(height - cropY * unitY);
  return true;
}

// 7.3.2.1.1
Sequence ReadSPS(ByteReader payload, VideoFacts& facts) {
  Sequence sequence;
  BitReader bits(payload);
  VideoFacts found = facts;
  const std::uint32_t chroma = ReadSampleFormat(bits, found);
  bits.Unsigned();  // log2_max_frame_num_minus4
  SkipPictureOrder(bits);
  bits.Unsigned();  // max_num_ref_frames
  bits.Skip(1);
  if (!ReadFrameSize(bits, chroma, found, sequence)) return sequence;
  facts = std::move(found);
  sequence.good = true;
  if (bits.Flag()) ReadVUI(bits, facts, sequence);
  return sequence;
}

// D.1.3: a frame, or the field that is displayed first.
const char* FieldOrderOf(ByteReader payload, const Sequence& sequence, VideoFacts& facts) {
  if (!sequence.pictureStructure) return nullptr;
  BitReader bits(payload);
  if (sequence.delaysPresent) bits.Skip(sequence.removalBits + sequence.outputBits);
  const std::uint32_t structure = bits.Bits(4);
  if (!bits.Good()) return nullptr;
  facts.pictureStructure = structure;
  if (structure == 1 || structure == 3 || structure == 5) return "Upper";
  if (structure == 2 || structure == 4 || structure == 6) return "Lower";
  return nullptr;
}

// 7.3.2.3.1: type and size are each a sum of bytes, followed by the payload.
std::uint64_t ReadSEIValue(ByteReader bytes, std::uint64_t& at) {
  std::uint64_t sum = 0;
  for (auto b = bytes.U8(at); b; b = bytes.U8(at)) {
    sum += *b;
    ++at;
    if (*b != 0xFF) break;
  }
  return sum;
}

void ReadSEI(ByteReader bytes, const Sequence& sequence, VideoFacts& facts) {
  std::uint64_t at = 0;
  while (bytes.Holds(at, 3)) {
    const std::uint64_t type = ReadSEIValue(bytes, at);
    const std::uint64_t size = ReadSEIValue(bytes, at);
    const ByteReader payload = bytes.Clip(at, size);
    if (type == kPictureTiming && sequence.good && facts.fieldOrder == nullptr) {
      facts.fieldOrder = FieldOrderOf(payload, sequence, facts);
    }
    if (type == kUserData && payload.Matches(0, kRecordingBlock)) {
      const auto block = payload.Clip(kRecordingBlock.size()).Bytes();
      if (facts.recordingBlock.empty()) facts.recordingBlock.assign(block.begin(), block.end());
    }
    at += size;
  }
}

}  // namespace

std::vector<std::byte> RemoveEmulationPrevention(ByteReader nal) {
  std::vector<std::byte> out;
  out.reserve(static_cast<std::size_t>(nal.Size()));
  int zeros = 0;
  for (const std::byte b : nal.Bytes()) {
    if (zeros >= 2 && b == std::byte{3}) {
      zeros = 0;
      continue;
    }
    zeros = b == std::byte{0} ? zeros + 1 : 0;
    out.push_back(b);
  }
  return out;
}

namespace {

// A code, or two numbers.
void ReadSampleAspect(BitReader& bits, VideoFacts& facts) {
  // Table E-1.
  constexpr std::array<std::array<std::uint8_t, 2>, 17> kRatios = {{{0, 0},
                                                                    {1, 1},
                                                                    {12, 11},
                                                                    {10, 11},
                                                                    {16, 11},
                                                                    {40, 33},
                                                                    {24, 11},
                                                                    {20, 11},
                                                                    {32, 11},
                                                                    {80, 33},
                                                                    {18, 11},
                                                                    {15, 11},
                                                                    {64, 33},
                                                                    {160, 99},
                                                                    {4, 3},
                                                                    {3, 2},
                                                                    {2, 1}}};
  constexpr std::uint32_t kExtended = 255;
  const std::uint32_t code = bits.Bits(8);
  if (code == kExtended) {
    facts.aspectWidth = bits.Bits(16);
    facts.aspectHeight = bits.Bits(16);
  } else if (code < kRatios.size()) {
    facts.aspectWidth = kRatios[code][0];
    facts.aspectHeight = kRatios[code][1];
  }
}

// Format 3, range 1, and if described primaries 8, transfer 8, matrix 8.
void ReadSignalType(BitReader& bits, VideoFacts& facts) {
  bits.Skip(4);
  if (!bits.Flag()) return;
  facts.primaries = bits.Bits(8);
  bits.Skip(8);
  facts.matrix = bits.Bits(8);
}

}  // namespace

void ReadVideoDescription(BitReader& bits, VideoFacts& facts) {
  if (bits.Flag()) ReadSampleAspect(bits, facts);
  if (bits.Flag()) bits.Skip(1);  // overscan
  if (bits.Flag()) ReadSignalType(bits, facts);
  if (bits.Flag()) {  // chroma location
    bits.Unsigned();
    bits.Unsigned();
  }
}

VideoFacts ReadAVCSequence(ByteReader nal) {
  VideoFacts facts;
  if ((nal.U8(0).value_or(0) & 0x1Fu) != kSPS) return facts;
  const auto payload = RemoveEmulationPrevention(nal.Clip(1, kMaxNalBytes));
  const Sequence sequence = ReadSPS(ByteReader(payload), facts);
  if (sequence.good && sequence.progressive) facts.fieldOrder = "Progressive";
  return facts;
}

VideoFacts ReadAVC(ByteReader stream) {
  VideoFacts facts;
  Sequence sequence;
  std::uint64_t at = FindStartCode(stream, 0);
  for (int count = 0; count < kMaxNals && at < stream.Size(); ++count) {
    constexpr std::uint64_t kStartCode = 3;
    const std::uint64_t begin = at + kStartCode;
    at = FindStartCode(stream, begin);
    const std::uint64_t end = at;
    if (begin >= end) continue;
    const unsigned type = stream.U8(begin).value_or(0) & 0x1Fu;
    if (type != kSPS && type != kSEI) continue;
    const auto payload =
        RemoveEmulationPrevention(stream.Clip(begin + 1, std::min(end - begin - 1, kMaxNalBytes)));
    if (type == kSPS && !sequence.good) sequence = ReadSPS(ByteReader(payload), facts);
    if (type == kSEI) ReadSEI(ByteReader(payload), sequence, facts);
    const bool ordered = sequence.good && (sequence.progressive || facts.fieldOrder != nullptr);
    if (ordered && !facts.recordingBlock.empty()) break;
  }
  if (sequence.good && sequence.progressive) facts.fieldOrder = "Progressive";
  // Default: cameras write interlaced high definition with the top field first.
  if (sequence.good && facts.fieldOrder == nullptr) facts.fieldOrder = "Upper";
  return facts;
}

}  // namespace Sorvik::xmp
