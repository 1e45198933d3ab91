// SPDX-License-Identifier: MIT
// The file of a query as input of FFmpeg, by its open descriptor.
#pragma once

#include <cstdint>

extern "C" {
#include <libavformat/avio.h>
}

namespace frame {

class FileInput {
 public:
  explicit FileInput(int descriptor);
  ~FileInput();
  FileInput(const FileInput&) = delete;
  FileInput& operator=(const FileInput&) = delete;

  // nullptr if memory is exhausted.
  AVIOContext* Context() const noexcept { return context_; }
  std::int64_t Size() const noexcept { return size_; }

 private:
  static int Read(void* input, std::uint8_t* buffer, int size);
  static std::int64_t Seek(void* input, std::int64_t offset, int whence);

  int descriptor_;
  std::int64_t size_ = 0;
  std::int64_t position_ = 0;
  AVIOContext* context_ = nullptr;
};

}  // namespace frame
