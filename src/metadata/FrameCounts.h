// SPDX-License-Identifier: MIT
// Parsing of frame counts.
#pragma once

#include <cstdint>
#include <string_view>

namespace Sorvik::XMPSupport {

// Separates count and rate in a frame count text.
inline constexpr std::string_view kFrameCountSeparator = " @ ";

// Parses the number at the start of `text` like strtoll in base 10: skips leading white space,
// accepts a sign, stops at the first non-digit, returns 0 without digits, and clamps to 64 bits.
std::int64_t ParseCount(std::string_view text) noexcept;

}  // namespace Sorvik::XMPSupport
