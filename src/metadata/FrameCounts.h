// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>

namespace Sorvik::XMPSupport {

// Between the count and the rate in the text of a frame count.
inline constexpr std::string_view kFrameCountSeparator = " @ ";

// The number at the start of `text` as the C library reads one in base 10: leading white space and
// a sign are taken, reading stops at the first character that is no digit, text without digits
// gives 0, and a number beyond 64 bits gives the nearest one that fits.
std::int64_t ParseCount(std::string_view text) noexcept;

}  // namespace Sorvik::XMPSupport
