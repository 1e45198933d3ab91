// SPDX-License-Identifier: MIT
// Byte sources for readers: a file on disk, and a memory buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/ByteReader.h"
#include "foundation/platform/FileSystem.h"
#include "xmp/Reader.h"

namespace Sorvik::xmp {

// A regular file. Open() reads its head once; later reads inside the head cost no I/O.
class FileOnDisk final : public FileBytes {
 public:
  // Returns nullopt if `path` is not a regular file or can't be read.
  static std::optional<FileOnDisk> Open(const std::string& path);

  std::uint64_t Size() const noexcept override { return file_.Size(); }
  std::vector<std::byte> Read(std::uint64_t offset, std::size_t count) const override;
  // The first kHeadSize bytes; valid until this object is moved or destroyed.
  foundation::ByteReader Head() const noexcept { return foundation::ByteReader(head_); }

 private:
  explicit FileOnDisk(platform::RegularFile file);

  platform::RegularFile file_;
  std::vector<std::byte> head_;
};

}  // namespace Sorvik::xmp
