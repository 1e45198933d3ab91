// SPDX-License-Identifier: MIT
// Text operations of the core library beyond those that hosts see.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "SorvikProvider/foundation/UTF16String.h"

namespace tarnwick::utility {

// Reads the whole of `text` as a decimal number, with an optional sign and nothing else. False, and
// `number` stays, if it isn't one or doesn't fit.
bool StringToNumber(std::u16string_view text, int& number) noexcept;

}  // namespace tarnwick::utility
