// SPDX-License-Identifier: MIT
#include "xmp/FileBytes.h"

#include <algorithm>
#include <utility>

#include "foundation/CardFolder.h"

namespace Sorvik::xmp {
namespace {

std::vector<std::byte> ReadPart(const platform::RegularFile& file, std::uint64_t offset,
                                std::size_t count) {
  if (offset >= file.Size()) return {};
  std::vector<std::byte> bytes(
      static_cast<std::size_t>(std::min<std::uint64_t>(count, file.Size() - offset)));
  bytes.resize(file.ReadAt(offset, bytes));
  return bytes;
}

}  // namespace

std::optional<FileOnDisk> FileOnDisk::Open(const std::string& path) {
  auto file = foundation::OpenOnCard(path);
  if (!file) return std::nullopt;
  return FileOnDisk(std::move(*file));
}

FileOnDisk::FileOnDisk(platform::RegularFile file)
    : file_(std::move(file)), head_(ReadPart(file_, 0, kHeadSize)) {}

std::vector<std::byte> FileOnDisk::Read(std::uint64_t offset, std::size_t count) const {
  // A small file is completely in the head, whatever `count` is.
  const bool all = Head().Size() == file_.Size() && offset <= file_.Size();
  if (all || Head().Holds(offset, count)) {
    const auto part = Head().Clip(offset, count).Bytes();
    return {part.begin(), part.end()};
  }
  return ReadPart(file_, offset, count);
}

}  // namespace Sorvik::xmp
