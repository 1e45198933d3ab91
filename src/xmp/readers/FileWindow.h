// SPDX-License-Identifier: MIT
// Random access to the bytes of one file for readers that seek: bytes in the head cost no I/O,
// other bytes are read into one movable window. The number and the size of reads are capped, which
// bounds the cost of any file.
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
  // `input` must outlive the window. A read fetches at least `minRead` bytes, as most seeks are
  // short.
  explicit FileWindow(const ReaderInput& input, std::uint64_t minRead = 16 * 1024)
      : file_(&input.file), head_(input.head), size_(input.file.Size()), minRead_(minRead) {}
  // Bytes in memory, such as an embedded block; they must outlive the window.
  explicit FileWindow(foundation::ByteReader memory) : head_(memory), size_(memory.Size()) {}
  FileWindow(const FileWindow&) = delete;
  FileWindow& operator=(const FileWindow&) = delete;

  std::uint64_t Size() const noexcept { return size_; }

  // Returns the `count` bytes at `offset`: fewer at the end of the file, none if they can't be
  // read. The view is valid until the next call.
  foundation::ByteReader At(std::uint64_t offset, std::uint64_t count);
  // Returns the last bytes of the file, at most `count`, and sets `offset` to their position.
  foundation::ByteReader Tail(std::uint64_t count, std::uint64_t& offset);
  // Returns a copy of exactly `count` bytes as text; empty if fewer are available or the cap is
  // exceeded.
  std::string Copy(std::uint64_t offset, std::uint64_t count);

  // Maximum size of one call. XMP packets are far smaller.
  static constexpr std::uint64_t kMaxBytes = std::uint64_t{16} << 20;

 private:
  // Far above the number that a file with 32 tracks needs.
  static constexpr unsigned kMaxReads = 96;

  const FileBytes* file_ = nullptr;
  foundation::ByteReader head_;
  std::uint64_t size_ = 0;
  std::uint64_t minRead_ = 0;
  std::vector<std::byte> window_;
  std::uint64_t windowStart_ = 0;
  unsigned reads_ = 0;
  std::uint64_t bytesRead_ = 0;
};

}  // namespace Sorvik::xmp
