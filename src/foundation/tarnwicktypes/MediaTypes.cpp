// SPDX-License-Identifier: MIT
#include "foundation/tarnwicktypes/MediaTypes.h"

#include <charconv>
#include <string>

namespace tarnwicktypes {

Hestra::UTF16String PixelAspectRatio::GetDisplayString() const {
  char digits[48];
  const double quotient = static_cast<double>(numerator_) / static_cast<double>(denominator_);
  const auto [end, error] =
      std::to_chars(digits, digits + sizeof(digits), quotient, std::chars_format::fixed, 4);
  std::string text(digits, error == std::errc() ? end : digits);
  while (text.ends_with('0') && !text.ends_with(".0")) text.pop_back();
  return tarnwick::utility::AsciiToUTF16(text);
}

}  // namespace tarnwicktypes
