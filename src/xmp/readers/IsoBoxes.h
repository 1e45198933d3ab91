// SPDX-License-Identifier: MIT
// The boxes of ISO base media files (QuickTime: atoms).
// Facts: ISO/IEC 14496-12, 4.2.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "xmp/readers/FileWindow.h"

namespace Sorvik::xmp {

// Four characters as a big-endian number.
constexpr std::uint32_t FourCC(std::string_view code) noexcept {
  std::uint32_t value = 0;
  for (const char c : code) value = value << 8 | static_cast<unsigned char>(c);
  return value;
}

struct IsoBox {
  std::uint32_t type = 0;
  std::uint64_t body = 0;  // offset in the file, after size and type
  std::uint64_t end = 0;   // never past the end of the parent box

  std::uint64_t Size() const noexcept { return end - body; }
};

// Iterates over the boxes in a range of a file.
class IsoBoxes {
 public:
  IsoBoxes(FileWindow& file, std::uint64_t begin, std::uint64_t end)
      : file_(file), next_(begin), end_(end) {}
  // The children of a box, starting `skip` bytes after the start of its body.
  IsoBoxes(FileWindow& file, const IsoBox& parent, std::uint64_t skip = 0)
      : IsoBoxes(file, parent.body + skip, parent.end) {}

  // Returns the next box; nullopt at the end, at invalid sizes, and after the maximum number of
  // boxes.
  std::optional<IsoBox> Next();

 private:
  static constexpr unsigned kMaxBoxes = 1024;

  FileWindow& file_;
  std::uint64_t next_;
  std::uint64_t end_;
  unsigned boxes_ = 0;
};

// Returns the first child box of that type; nullopt if there is none.
std::optional<IsoBox> FindBox(FileWindow& file, const IsoBox& parent, std::uint32_t type,
                              std::uint64_t skip = 0);

}  // namespace Sorvik::xmp
