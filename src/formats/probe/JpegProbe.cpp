// SPDX-License-Identifier: MIT
#include <bitset>
#include <optional>

#include "formats/probe/Probes.h"

// JPEG pictures (ISO/IEC 10918-1): segments, then entropy-coded data up to the marker EOI. Cameras
// append previews, which the index of CIPA DC-007 ("MPF") describes, and data of any other kind.
namespace Sorvik::formats::probe {
namespace {

using foundation::ByteReader;

enum Marker : std::uint8_t {
  kDefineHuffmanTables = 0xC4,
  kRestart0 = 0xD0,
  kRestart7 = 0xD7,
  kStartOfImage = 0xD8,
  kEndOfImage = 0xD9,
  kStartOfScan = 0xDA,
  kDefineRestartInterval = 0xDD,
  kApplication2 = 0xE2,
  kFill = 0xFF,
};

constexpr int kMaxSegments = 1024;
constexpr std::size_t kTailBytes = std::size_t{64} << 10;

bool IsImageAt(const RegularFile& file, std::uint64_t offset) {
  const auto bytes = ReadPart(file, offset, 2);
  const ByteReader reader{bytes};
  return reader.U8(0) == kFill && reader.U8(1) == kStartOfImage;
}

// The end of the last appended picture that begins where the index says so; 0 if there is none.
std::uint64_t EndOfIndexedImages(const RegularFile& file, std::uint64_t segmentAt,
                                 std::size_t segmentBytes) {
  constexpr std::uint64_t kTiffAt = 4;  // after "MPF\0"; offsets count from here
  constexpr std::uint16_t kImagesTag = 0xB002;
  constexpr std::uint64_t kImageBytes = 16;  // flags (4), size (4), offset (4), dependents (4)
  constexpr std::uint64_t kMaxImages = 64;
  const auto bytes = ReadPart(file, segmentAt, segmentBytes);
  const ByteReader segment{bytes};
  if (!segment.Matches(0, std::string_view("MPF\0", 4))) return 0;
  const ByteReader tiff = segment.Clip(kTiffAt);
  const bool bigEndian = tiff.Matches(0, "MM");
  const std::uint64_t directory = tiff.U32(4, bigEndian).value_or(0);
  const std::uint64_t entries = tiff.U16(directory, bigEndian).value_or(0);
  std::uint64_t end = 0;
  for (std::uint64_t i = 0; i < entries; ++i) {
    const std::uint64_t at = directory + 2 + 12 * i;
    if (tiff.U16(at, bigEndian) != kImagesTag) continue;
    const std::uint64_t images = tiff.U32(at + 4, bigEndian).value_or(0) / kImageBytes;
    const std::uint64_t list = tiff.U32(at + 8, bigEndian).value_or(0);
    for (std::uint64_t image = 1; image < std::min(images, kMaxImages); ++image) {
      const std::uint64_t size = tiff.U32(list + image * kImageBytes + 4, bigEndian).value_or(0);
      const std::uint64_t offset = tiff.U32(list + image * kImageBytes + 8, bigEndian).value_or(0);
      const std::uint64_t begin = segmentAt + kTiffAt + offset;
      if (offset != 0 && IsImageAt(file, begin)) end = std::max(end, begin + size);
    }
    break;
  }
  return end;
}

// True if the bytes look like the middle of a picture: each FF belongs to a stuffed byte, or to a
// marker that occurs between scans.
bool AreScanData(ByteReader bytes) {
  for (std::uint64_t at = 0; at < bytes.Size(); ++at) {
    if (bytes.U8(at) != kFill) continue;
    const auto next = bytes.U8(at + 1);
    if (!next || *next == 0 || *next == kFill || (*next >= kRestart0 && *next <= kRestart7)) {
      continue;
    }
    if (*next != kDefineHuffmanTables && *next != kStartOfScan && *next != kDefineRestartInterval) {
      return false;
    }
    at += 1U + bytes.U16BE(at + 2).value_or(0);
  }
  return true;
}

// Entropy-coded data have nearly all values, and an FF in each 256 bytes.
bool HasManyValues(ByteReader bytes) {
  constexpr std::size_t kValues = 256;
  std::bitset<kValues> seen;
  for (std::uint64_t at = 0; at < bytes.Size(); ++at) seen.set(*bytes.U8(at));
  return seen.test(kFill) && seen.count() > kValues / 2;
}

bool AreZeros(const std::vector<std::byte>& bytes) {
  return std::ranges::all_of(bytes, [](std::byte value) { return value == std::byte{0}; });
}

bool EndsInZeros(const RegularFile& file) {
  const std::uint64_t bytes = std::min<std::uint64_t>(kTailBytes, file.Size());
  return AreZeros(ReadPart(file, file.Size() - bytes, kTailBytes));
}

struct Header {
  bool isComplete = true;
  std::optional<std::uint64_t> scanAt;  // where the entropy-coded data begin; nullopt if unknown
  std::uint64_t endOfAppended = 0;
};

Header ReadHeader(const RegularFile& file) {
  Header header;
  std::uint64_t at = 2;
  for (int i = 0; i < kMaxSegments; ++i) {
    const auto bytes = ReadPart(file, at, 4);
    const ByteReader segment{bytes};
    const auto marker = segment.U8(1);
    if (segment.U8(0).value_or(kFill) != kFill) {
      header.isComplete = segment.U8(0) != 0 || !EndsInZeros(file);
      return header;
    }
    if (marker == kEndOfImage) return header;
    if (marker == kFill) {
      ++at;
      continue;
    }
    const auto length = segment.U16BE(2);
    if (marker == kApplication2 && length) {
      header.endOfAppended =
          std::max(header.endOfAppended, EndOfIndexedImages(file, at + 4, *length));
    }
    at += 2 + std::uint64_t{length.value_or(0)};
    header.isComplete = length && at <= file.Size();
    if (marker == kStartOfScan) header.scanAt = at;
    if (!header.isComplete || header.scanAt) return header;
  }
  return header;
}

// Where the zeros at the end begin: cameras append them, and the rest of a file whose copy was
// interrupted may consist of them. Found by halving, since no picture has a block of zeros.
std::uint64_t EndWithoutZeros(const RegularFile& file, std::uint64_t scanAt) {
  if (!EndsInZeros(file)) return file.Size();
  std::uint64_t first = scanAt / kTailBytes + 1;  // the first block that may be zero
  std::uint64_t last = std::max(file.Size() / kTailBytes, first);  // this one is
  while (first < last) {
    const std::uint64_t middle = first + (last - first) / 2;
    if (AreZeros(ReadPart(file, middle * kTailBytes, kTailBytes))) {
      last = middle;
    } else {
      first = middle + 1;
    }
  }
  const std::uint64_t blockAt = (last - 1) * kTailBytes;
  const auto block = ReadPart(file, blockAt, kTailBytes);
  std::uint64_t end = blockAt + block.size();
  while (end > std::max(blockAt, scanAt) && block[end - blockAt - 1] == std::byte{0}) --end;
  return end;
}

bool EndsInScan(const RegularFile& file, std::uint64_t scanAt) {
  const std::uint64_t end = EndWithoutZeros(file, scanAt);
  const std::uint64_t tailAt = std::max(scanAt, end - std::min<std::uint64_t>(kTailBytes, end));
  const auto bytes = ReadPart(file, tailAt, kTailBytes);
  const ByteReader tail{bytes};
  return AreScanData(tail) && (tailAt == scanAt || HasManyValues(tail));
}

}  // namespace

MediaProbe ProbeJpeg(const RegularFile& file) {
  if (!IsImageAt(file, 0)) return NotA("a JPEG picture");
  const Header header = ReadHeader(file);
  if (!header.isComplete) return Truncated("ends inside the header");
  if (header.endOfAppended > file.Size()) {
    return TooShort(file, header.endOfAppended, "its index of pictures");
  }
  if (header.scanAt && EndsInScan(file, *header.scanAt)) {
    return Truncated("ends without an end marker");
  }
  return Passed();
}

}  // namespace Sorvik::formats::probe
