// SPDX-License-Identifier: MIT
// The boxes of which ISO base media files are made (atoms in QuickTime's words).
// Facts: ISO/IEC 14496-12, 4.2.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "xmp/readers/FileWindow.h"

namespace Sorvik::xmp {

// Four characters as a number; upper bytes are the first ones.
constexpr std::uint32_t FourCC(std::string_view code) noexcept {
  std::uint32_t value = 0;
  for (const char c : code) value = value << 8 | static_cast<unsigned char>(c);
  return value;
}

struct IsoBox {
  std::uint32_t type = 0;
  std::uint64_t body = 0;  // where it begins in the file, behind size and type
  std::uint64_t end = 0;   // never past the end of the box around it

  std::uint64_t Size() const noexcept { return end - body; }
};

// Goes over the boxes that stand between two places of a file.
class IsoBoxes {
 public:
  IsoBoxes(FileWindow& file, std::uint64_t begin, std::uint64_t end)
      : file_(file), next_(begin), end_(end) {}
  // Those inside of a box, `skip` bytes behind its start.
  IsoBoxes(FileWindow& file, const IsoBox& around, std::uint64_t skip = 0)
      : IsoBoxes(file, around.body + skip, around.end) {}

  // The next box; nothing at the end, at damage, and after a number no real file reaches.
  std::optional<IsoBox> Next();

 private:
  static constexpr unsigned kMaxBoxes = 1024;

  FileWindow& file_;
  std::uint64_t next_;
  std::uint64_t end_;
  unsigned boxes_ = 0;
};

// The first box of that type inside; nothing if there is none.
std::optional<IsoBox> FindBox(FileWindow& file, const IsoBox& around, std::uint32_t type,
                              std::uint64_t skip = 0);

}  // namespace Sorvik::xmp
