// SPDX-License-Identifier: MIT
#include "FileInput.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

extern "C" {
#include <libavutil/error.h>
#include <libavutil/mem.h>
}

namespace frame {
namespace {

constexpr int kBufferBytes = 64 * 1024;

}  // namespace

FileInput::FileInput(int descriptor) : descriptor_(descriptor) {
  struct stat facts;
  if (fstat(descriptor, &facts) == 0) size_ = facts.st_size;
  auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
  if (buffer == nullptr) return;
  context_ = avio_alloc_context(buffer, kBufferBytes, 0, this, &Read, nullptr, &Seek);
  if (context_ == nullptr) av_free(buffer);
}

FileInput::~FileInput() {
  if (context_ != nullptr) av_freep(&context_->buffer);
  avio_context_free(&context_);
}

int FileInput::Read(void* input, std::uint8_t* buffer, int size) {
  auto& self = *static_cast<FileInput*>(input);
  ssize_t count;
  do {
    count = pread(self.descriptor_, buffer, static_cast<std::size_t>(size), self.position_);
  } while (count < 0 && errno == EINTR);
  if (count < 0) return AVERROR(errno);
  if (count == 0) return AVERROR_EOF;
  self.position_ += count;
  return static_cast<int>(count);
}

std::int64_t FileInput::Seek(void* input, std::int64_t offset, int whence) {
  auto& self = *static_cast<FileInput*>(input);
  if ((whence & AVSEEK_SIZE) != 0) return self.size_;
  std::int64_t base = 0;
  if (whence == SEEK_CUR) base = self.position_;
  if (whence == SEEK_END) base = self.size_;
  std::int64_t position = 0;
  if (__builtin_add_overflow(base, offset, &position) || position < 0) return AVERROR(EINVAL);
  self.position_ = position;
  return position;
}

}  // namespace frame
