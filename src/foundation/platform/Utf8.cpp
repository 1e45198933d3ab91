// SPDX-License-Identifier: MIT
#include "foundation/platform/Utf8.h"

namespace Sorvik::platform {

std::optional<DecodedPoint> DecodePoint(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return DecodedPoint{lead, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return std::nullopt;
  char32_t point = lead & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return std::nullopt;
    point = (point << 6) | (byte(i) & 0x3Fu);
  }
  constexpr char32_t kMinPoint[] = {0, 0, 0x80, 0x800, 0x10000};  // by length
  const bool surrogate = point >= 0xD800 && point <= 0xDFFF;
  if (point < kMinPoint[length] || point > 0x10FFFF || surrogate) return std::nullopt;
  return DecodedPoint{point, length};
}

}  // namespace Sorvik::platform
