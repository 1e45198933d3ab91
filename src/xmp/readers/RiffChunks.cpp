// SPDX-License-Identifier: MIT
#include "xmp/readers/RiffChunks.h"

#include <algorithm>

namespace Sorvik::xmp {

std::optional<RiffChunk> RiffChunks::Next() {
  if (next_ >= end_ || end_ - next_ < 8 || ++chunks_ > kMaxChunks) return std::nullopt;
  const auto header = file_.At(next_, 8);
  const auto id = header.U32BE(0);
  const auto size = header.U32LE(4);
  if (!id || !size) return std::nullopt;

  RiffChunk chunk{*id, next_ + 8, *size};
  next_ += 8 + chunk.size + chunk.size % 2;
  // A truncated chunk, or one whose size was never written, ends with its parent.
  chunk.size = std::min(chunk.size, end_ - chunk.body);
  return chunk;
}

std::uint32_t FormOf(FileWindow& file, const RiffChunk& list) {
  return ChunkBytes(file, list, 4).U32BE(0).value_or(0);
}

foundation::ByteReader ChunkBytes(FileWindow& file, const RiffChunk& chunk,
                                  std::uint64_t maxBytes) {
  return file.At(chunk.body, std::min(chunk.size, maxBytes));
}

}  // namespace Sorvik::xmp
