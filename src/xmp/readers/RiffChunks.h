// SPDX-License-Identifier: MIT
// The chunks of RIFF files. Facts: Multimedia Programming Interface and Data Specifications 1.0,
// chapter 2.
#pragma once

#include <optional>

#include "xmp/readers/IsoBoxes.h"

namespace Sorvik::xmp {

struct RiffChunk {
  std::uint32_t id = 0;    // see FourCC
  std::uint64_t body = 0;  // offset of its data in the file
  std::uint64_t size = 0;  // size of the available data
};

// Iterates over the chunks in a range of a file.
class RiffChunks {
 public:
  RiffChunks(FileWindow& file, std::uint64_t begin, std::uint64_t end)
      : file_(file), next_(begin), end_(end) {}
  // The chunks inside a RIFF or LIST chunk, after its form type.
  RiffChunks(FileWindow& file, const RiffChunk& list)
      : RiffChunks(file, list.body + 4, list.body + list.size) {}

  // Returns the next chunk; nullopt at the end and after the maximum number of chunks.
  std::optional<RiffChunk> Next();
  // Continues at offset `at`, for sizes that are stored elsewhere in the file.
  void Continue(std::uint64_t at) noexcept { next_ = at; }

 private:
  static constexpr unsigned kMaxChunks = 1024;

  FileWindow& file_;
  std::uint64_t next_;
  std::uint64_t end_;
  unsigned chunks_ = 0;
};

// Returns the form type of a RIFF or LIST chunk, such as 'AVI ' or 'hdrl'; 0 if it has none.
std::uint32_t FormOf(FileWindow& file, const RiffChunk& list);

// Returns the data of a chunk, at most `maxBytes` bytes. Valid until the window moves.
foundation::ByteReader ChunkBytes(FileWindow& file, const RiffChunk& chunk, std::uint64_t maxBytes);

}  // namespace Sorvik::xmp
