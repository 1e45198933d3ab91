// SPDX-License-Identifier: MIT
// The encoded bytes of an image: a regular file that is read piece by piece, or bytes in memory.
// One object belongs to one thread at a time.
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

// Larger files are no pictures that anyone wants as a thumbnail, and some decoders hold the whole
// file in memory.
inline constexpr std::uint64_t kMaxEncodedImageBytes = 256u << 20;

class ImageSource {
 public:
  // Nothing if there is no regular file, or if it is larger than kMaxEncodedImageBytes.
  static std::optional<ImageSource> OpenFile(const std::string& path);
  // Borrows the bytes; the caller keeps them alive.
  explicit ImageSource(std::span<const std::byte> bytes) noexcept : data_(bytes) {}

  std::uint64_t Size() const noexcept;
  // Fills `into` from `offset` and returns how many bytes were there.
  std::size_t ReadAt(std::uint64_t offset, std::span<std::byte> into) const noexcept;

 private:
  explicit ImageSource(platform::RegularFile file) noexcept : data_(std::move(file)) {}

  std::variant<std::span<const std::byte>, platform::RegularFile> data_;
};

}  // namespace Sorvik::imaging
