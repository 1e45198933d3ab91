// SPDX-License-Identifier: MIT
#include "formats/IsoBox.h"

namespace Sorvik::formats {

std::optional<IsoBox> IsoBoxAt(foundation::ByteReader head, std::uint64_t at, std::uint64_t limit) {
  const auto size = head.U32BE(0);
  if (!size || !head.Holds(0, 8)) return std::nullopt;
  IsoBox box{head.TextAt(4, 4), at + 8, limit};
  if (*size == 1) {
    const auto large = head.U64BE(8);
    if (!large || *large < 16) return std::nullopt;
    box.bodyAt = at + 16;
    box.end = *large > UINT64_MAX - at ? UINT64_MAX : at + *large;
  } else if (*size != 0) {
    if (*size < 8) return std::nullopt;
    box.end = at + *size;
  }
  return box;
}

}  // namespace Sorvik::formats
