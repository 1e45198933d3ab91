// SPDX-License-Identifier: MIT
// The encoded bytes of an image: a regular file that is read in pieces, or bytes in memory. An
// object must not be used by two threads at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <variant>

#include "foundation/platform/FileSystem.h"

namespace Sorvik::imaging {

// Larger files are rejected: some decoders load the complete file into memory.
inline constexpr std::uint64_t kMaxEncodedImageBytes = 256u << 20;

class ImageSource {
 public:
  // Returns nullopt if `path` is no regular file, or if it is larger than kMaxEncodedImageBytes.
  static std::optional<ImageSource> OpenFile(const std::string& path);
  // Doesn't copy the bytes; they must outlive this object.
  explicit ImageSource(std::span<const std::byte> bytes) noexcept : data_(bytes) {}

  std::uint64_t Size() const noexcept;
  // Reads up to `into.size()` bytes at `offset` and returns their number.
  std::size_t ReadAt(std::uint64_t offset, std::span<std::byte> into) const noexcept;

 private:
  explicit ImageSource(platform::RegularFile file) noexcept : data_(std::move(file)) {}

  std::variant<std::span<const std::byte>, platform::RegularFile> data_;
};

}  // namespace Sorvik::imaging
