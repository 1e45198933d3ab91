// SPDX-License-Identifier: MIT
// Decoding of UTF-8 names. Names on disk are bytes; a byte that isn't part of valid UTF-8 is
// represented by the lone low surrogate U+DC00 + byte.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace Sorvik::platform {

inline constexpr char16_t kEscapeBase = 0xDC00;  // + byte

struct DecodedPoint {
  char32_t point;
  std::size_t length;  // in bytes
};

// The code point at the start of `text`, which isn't empty. Returns nullopt if the bytes there
// aren't valid UTF-8 (overlong forms, surrogates and values above U+10FFFF included).
std::optional<DecodedPoint> DecodePoint(std::string_view text);

}  // namespace Sorvik::platform
