// SPDX-License-Identifier: MIT
#include "foundation/imaging/GifFile.h"

#include <array>
#include <cstdint>

#include "foundation/ByteReader.h"
#include "foundation/imaging/ImageDecoder.h"

namespace Sorvik::imaging {
namespace {

using foundation::ByteReader;

constexpr std::uint8_t kExtension = 0x21;
constexpr std::uint8_t kImage = 0x2C;
constexpr std::byte kTrailer{0x3B};

std::optional<std::uint8_t> ByteAt(const ImageSource& source, std::uint64_t offset) {
  std::array<std::byte, 1> byte;
  if (source.ReadAt(offset, byte) != 1) return std::nullopt;
  return std::to_integer<std::uint8_t>(byte[0]);
}

bool HasPixels(std::int64_t width, std::int64_t height) {
  return width > 0 && height > 0 && width * height <= kMaxPixels;
}

// The size in bytes of the colour table with the packed field `flags`; 0 if the highest bit is
// clear.
std::uint64_t TableBytes(std::uint8_t flags) {
  return (flags & 0x80) == 0 ? 0 : std::uint64_t{3} << ((flags & 7) + 1);
}

// Returns the offset after the empty block that ends a sequence of sub-blocks.
std::optional<std::uint64_t> SkipSubBlocks(const ImageSource& source, std::uint64_t offset) {
  while (const auto length = ByteAt(source, offset)) {
    offset += std::uint64_t{1} + *length;
    if (*length == 0) return offset;
  }
  return std::nullopt;
}

// Returns the offset after the first image; `offset` is that of the first block.
std::optional<std::uint64_t> EndOfFirstImage(const ImageSource& source, std::uint64_t offset) {
  while (const auto introducer = ByteAt(source, offset)) {
    if (*introducer == kExtension) {
      const auto end = SkipSubBlocks(source, offset + 2);
      if (!end) return std::nullopt;
      offset = *end;
      continue;
    }
    std::array<std::byte, 10> image;
    if (*introducer != kImage || source.ReadAt(offset, image) != image.size()) return std::nullopt;
    const ByteReader reader(image);
    if (!HasPixels(*reader.U16LE(5), *reader.U16LE(7))) return std::nullopt;
    return SkipSubBlocks(source, offset + image.size() + TableBytes(*reader.U8(9)) + 1);
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::vector<std::byte>> FirstGifFrame(const ImageSource& source) {
  std::array<std::byte, 13> head;
  if (source.ReadAt(0, head) != head.size()) return std::nullopt;
  const ByteReader reader(head);
  if (!HasPixels(*reader.U16LE(6), *reader.U16LE(8))) return std::nullopt;
  const auto end = EndOfFirstImage(source, head.size() + TableBytes(*reader.U8(10)));
  if (!end || *end > source.Size()) return std::nullopt;
  std::vector<std::byte> bytes(static_cast<std::size_t>(*end));
  if (source.ReadAt(0, bytes) != bytes.size()) return std::nullopt;
  bytes.push_back(kTrailer);
  return bytes;
}

}  // namespace Sorvik::imaging
