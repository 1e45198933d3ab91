// SPDX-License-Identifier: MIT
#include "xmp/readers/EmbeddedJpeg.h"

#include <algorithm>

#include "xmp/Namespaces.h"
#include "xmp/readers/JpegReader.h"

namespace Sorvik::xmp {

namespace {

// A range of another file.
class FileRange final : public FileBytes {
 public:
  FileRange(const FileBytes& file, std::uint64_t offset, std::uint64_t length)
      : file_(file),
        offset_(std::min(offset, file.Size())),
        size_(std::min(length, file.Size() - offset_)) {}

  std::uint64_t Size() const noexcept override { return size_; }
  std::vector<std::byte> Read(std::uint64_t offset, std::size_t count) const override {
    if (offset >= size_) return {};
    const std::uint64_t available = std::min<std::uint64_t>(count, size_ - offset);
    return file_.Read(offset_ + offset, static_cast<std::size_t>(available));
  }

 private:
  const FileBytes& file_;
  std::uint64_t offset_;
  std::uint64_t size_;
};

}  // namespace

std::optional<std::uint64_t> AddEmbeddedJpeg(const FileBytes& file, std::uint64_t offset,
                                             std::uint64_t length, ReaderOutput& output) {
  const FileRange range(file, offset, length);
  const auto head = range.Read(0, kHeadSize);
  ReaderOutput jpeg;
  const auto orientation = ReadJpeg({{}, range, foundation::ByteReader(head)}, jpeg);
  jpeg.native.DeleteProperty(kNsDM, "videoPixelDepth");  // of the preview
  output.native.FillFrom(jpeg.native);
  output.hasNative |= jpeg.hasNative;
  if (!output.packet.empty()) return orientation;
  output.packet = std::move(jpeg.packet);
  output.extendedPacket = std::move(jpeg.extendedPacket);
  return orientation;
}

}  // namespace Sorvik::xmp
