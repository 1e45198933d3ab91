// SPDX-License-Identifier: MIT
// The chunks of which RIFF files are made. Facts: Multimedia Programming Interface and Data
// Specifications 1.0, chapter 2.
#pragma once

#include <optional>

#include "xmp/readers/IsoBoxes.h"

namespace Sorvik::xmp {

struct RiffChunk {
  std::uint32_t id = 0;    // see FourCC
  std::uint64_t body = 0;  // where its data begin in the file
  std::uint64_t size = 0;  // of the data that are there
};

// Goes over the chunks that stand between two places of a file.
class RiffChunks {
 public:
  RiffChunks(FileWindow& file, std::uint64_t begin, std::uint64_t end)
      : file_(file), next_(begin), end_(end) {}
  // Those inside of a RIFF or LIST chunk, behind its form.
  RiffChunks(FileWindow& file, const RiffChunk& list)
      : RiffChunks(file, list.body + 4, list.body + list.size) {}

  // The next chunk; nothing at the end and after a number no real file reaches.
  std::optional<RiffChunk> Next();
  // Goes on at `at` with the next chunk: for sizes that a file tells elsewhere.
  void Continue(std::uint64_t at) noexcept { next_ = at; }

 private:
  static constexpr unsigned kMaxChunks = 1024;

  FileWindow& file_;
  std::uint64_t next_;
  std::uint64_t end_;
  unsigned chunks_ = 0;
};

// The form of a RIFF or LIST chunk, such as 'AVI ' or 'hdrl'; 0 if it has none.
std::uint32_t FormOf(FileWindow& file, const RiffChunk& list);

// What a chunk holds, at most `most` bytes. Borrowed until the window moves.
foundation::ByteReader ChunkBytes(FileWindow& file, const RiffChunk& chunk, std::uint64_t most);

}  // namespace Sorvik::xmp
