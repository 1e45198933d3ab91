// SPDX-License-Identifier: MIT
#include "xmp/readers/IsoBoxes.h"

#include <algorithm>

namespace Sorvik::xmp {

std::optional<IsoBox> IsoBoxes::Next() {
  if (next_ >= end_ || end_ - next_ < 8 || ++boxes_ > kMaxBoxes) return std::nullopt;
  const auto header = file_.At(next_, 16);
  const auto size32 = header.U32BE(0);
  const auto type = header.U32BE(4);
  if (!size32 || !type) return std::nullopt;

  std::uint64_t size = *size32;
  std::uint64_t headerSize = 8;
  if (size == 1) {
    headerSize = 16;
    size = header.U64BE(8).value_or(0);
  } else if (size == 0) {
    size = end_ - next_;  // extends to the end of the parent
  }
  if (size < headerSize) return std::nullopt;
  size = std::min(size, end_ - next_);
  if (size < headerSize) return std::nullopt;

  const IsoBox box{*type, next_ + headerSize, next_ + size};
  next_ += size;
  return box;
}

std::optional<IsoBox> FindBox(FileWindow& file, const IsoBox& parent, std::uint32_t type,
                              std::uint64_t skip) {
  IsoBoxes boxes(file, parent, skip);
  while (const auto box = boxes.Next()) {
    if (box->type == type) return box;
  }
  return std::nullopt;
}

}  // namespace Sorvik::xmp
