// SPDX-License-Identifier: MIT
// The bytes of one file for a reader that jumps about: what lies in the head costs nothing, what
// lies behind it is read into one window that moves. The number of moves and the size of each are
// capped, so that no file, however hostile, costs more.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/ByteReader.h"
#include "xmp/Reader.h"

namespace Sorvik::xmp {

class FileWindow {
 public:
  // The file under a reader; `input` must outlive the window. A read fetches at least `leastRead`
  // bytes: most jumps go a short way.
  explicit FileWindow(const ReaderInput& input, std::uint64_t leastRead = 16 * 1024)
      : file_(&input.file), head_(input.head), size_(input.file.Size()), leastRead_(leastRead) {}
  // Bytes in memory, such as a block of another file; they must outlive the window.
  explicit FileWindow(foundation::ByteReader memory) : head_(memory), size_(memory.Size()) {}
  FileWindow(const FileWindow&) = delete;
  FileWindow& operator=(const FileWindow&) = delete;

  std::uint64_t Size() const noexcept { return size_; }

  // The `count` bytes at `offset`: fewer at the end of the file, none when they can't be had.
  // Borrowed until the next call.
  foundation::ByteReader At(std::uint64_t offset, std::uint64_t count);
  // The last bytes of the file, at most `count`; `offset` becomes where they begin.
  foundation::ByteReader Tail(std::uint64_t count, std::uint64_t& offset);
  // A copy of exactly `count` bytes as text; empty if they aren't all there or too many.
  std::string Copy(std::uint64_t offset, std::uint64_t count);

  // The most that one call gives: packets of XMP are far smaller, so that more is a lie.
  static constexpr std::uint64_t kMaxBytes = std::uint64_t{16} << 20;

 private:
  // Well above what a file with 32 tracks takes.
  static constexpr unsigned kMaxReads = 96;

  const FileBytes* file_ = nullptr;
  foundation::ByteReader head_;
  std::uint64_t size_ = 0;
  std::uint64_t leastRead_ = 0;
  std::vector<std::byte> window_;
  std::uint64_t windowStart_ = 0;
  unsigned reads_ = 0;
  std::uint64_t bytesRead_ = 0;
};

}  // namespace Sorvik::xmp
