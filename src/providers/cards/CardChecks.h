// SPDX-License-Identifier: MIT
// What the checks of P2, XDCAM and XDCAM EX have in common.
#pragma once

#include <cstddef>

namespace Sorvik {

// Records of clips are some 10 kB; larger ones count as unreadable.
inline constexpr std::size_t kMaxClipXmlBytes = std::size_t{4} << 20;

}  // namespace Sorvik
