// SPDX-License-Identifier: MIT
#include "xmp/readers/PictureSize.h"

#include <utility>

#include "xmp/NativeValues.h"

namespace Sorvik::xmp {

void SetPictureSize(TXMPMeta& meta, std::uint64_t width, std::uint64_t height,
                    std::optional<std::uint64_t> orientation) {
  constexpr std::uint64_t kMaxSide = 0xFFFF'FFFF;
  if (width > kMaxSide || height > kMaxSide) return;
  if (orientation && *orientation >= 5 && *orientation <= 8) std::swap(width, height);
  SetFrameSize(meta, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
}

}  // namespace Sorvik::xmp
