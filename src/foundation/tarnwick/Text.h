// SPDX-License-Identifier: MIT
// Internal text operations.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "SorvikProvider/foundation/UTF16String.h"

namespace tarnwick::utility {

// Parses `text` as a decimal number with an optional sign. Returns false and leaves `number`
// unchanged if it has other characters or is out of range.
bool StringToNumber(std::u16string_view text, int& number) noexcept;

}  // namespace tarnwick::utility
