// SPDX-License-Identifier: MIT
#include "xmp/readers/FileWindow.h"

#include <algorithm>

namespace Sorvik::xmp {

using foundation::ByteReader;

ByteReader FileWindow::At(std::uint64_t offset, std::uint64_t count) {
  if (offset >= size_) return ByteReader();
  count = std::min({count, size_ - offset, kMaxBytes});
  if (head_.Holds(offset, count)) return head_.Clip(offset, count);

  const ByteReader window{window_};
  if (offset >= windowStart_ && window.Holds(offset - windowStart_, count)) {
    return window.Clip(offset - windowStart_, count);
  }
  if (file_ == nullptr || reads_ == kMaxReads || bytesRead_ > 2 * kMaxBytes) {
    return ByteReader();
  }
  ++reads_;
  const std::uint64_t wanted = std::min(std::max(count, minRead_), size_ - offset);
  window_ = file_->Read(offset, static_cast<std::size_t>(wanted));
  windowStart_ = offset;
  bytesRead_ += window_.size();
  return ByteReader{window_}.Clip(0, count);
}

ByteReader FileWindow::Tail(std::uint64_t count, std::uint64_t& offset) {
  count = std::min(count, size_);
  offset = size_ - count;
  return At(offset, count);
}

std::string FileWindow::Copy(std::uint64_t offset, std::uint64_t count) {
  if (count > kMaxBytes) return {};
  const ByteReader bytes = At(offset, count);
  return bytes.Size() == count ? std::string(bytes.Text()) : std::string();
}

}  // namespace Sorvik::xmp
