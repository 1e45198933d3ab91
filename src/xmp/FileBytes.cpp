// SPDX-License-Identifier: MIT
#include "xmp/FileBytes.h"

#include <utility>

#include "foundation/CardFolder.h"

namespace Sorvik::xmp {

std::optional<FileOnDisk> FileOnDisk::Open(const std::string& path) {
  auto file = foundation::OpenOnCard(path);
  if (!file) return std::nullopt;
  return FileOnDisk(std::move(*file));
}

FileOnDisk::FileOnDisk(platform::RegularFile file)
    : file_(std::move(file)), head_(file_.ReadHead(kHeadSize)) {}

std::vector<std::byte> FileOnDisk::Read(std::uint64_t offset, std::size_t count) const {
  // A small file is completely in the head, whatever `count` is.
  const bool all = Head().Size() == file_.Size() && offset <= file_.Size();
  if (all || Head().Holds(offset, count)) {
    const auto part = Head().Clip(offset, count).Bytes();
    return {part.begin(), part.end()};
  }
  return file_.ReadPart(offset, count);
}

}  // namespace Sorvik::xmp
