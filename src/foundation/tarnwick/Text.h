// SPDX-License-Identifier: MIT
// Text operations of the core library beyond those that hosts see.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "SorvikProvider/foundation/UTF16String.h"

namespace tarnwick::utility {

// The one order of names and paths: by 16-bit code units of the whole string. On UTF-8 it differs
// from the order of bytes only between U+E000..U+FFFF and the planes above.
bool LessByCodeUnits(std::string_view a, std::string_view b);

// Where two texts begin to differ, or the length of the shorter. Names in a folder tend to share
// long beginnings, so whole words are compared.
std::size_t FirstDifference(std::string_view a, std::string_view b);

// Reads the whole of `text` as a decimal number, with an optional sign and nothing else. False, and
// `number` stays, if it isn't one or doesn't fit.
bool StringToNumber(std::u16string_view text, int& number) noexcept;

}  // namespace tarnwick::utility
