// SPDX-License-Identifier: MIT
#include "foundation/imaging/ImageSource.h"

#include <algorithm>

#include "foundation/ByteReader.h"

namespace Sorvik::imaging {

std::optional<ImageSource> ImageSource::OpenFile(const std::string& path) {
  auto file = platform::RegularFile::Open(path);
  if (!file || file->Size() > kMaxEncodedImageBytes) return std::nullopt;
  return ImageSource(std::move(*file));
}

std::uint64_t ImageSource::Size() const noexcept {
  if (const auto* file = std::get_if<platform::RegularFile>(&data_)) return file->Size();
  return std::get<std::span<const std::byte>>(data_).size();
}

std::size_t ImageSource::ReadAt(std::uint64_t offset, std::span<std::byte> into) const noexcept {
  if (const auto* file = std::get_if<platform::RegularFile>(&data_)) {
    return file->ReadAt(offset, into);
  }
  const foundation::ByteReader reader(std::get<std::span<const std::byte>>(data_));
  const auto part = reader.Clip(offset, into.size()).Bytes();
  std::copy(part.begin(), part.end(), into.begin());
  return part.size();
}

}  // namespace Sorvik::imaging
