// SPDX-License-Identifier: MIT
// Strings in JSON (RFC 8259). Any thread.
#pragma once

#include <string>
#include <string_view>

#include "SorvikProvider/foundation/Export.h"

namespace Hestra {

// Appends `text` with quotes and escapes. A byte that isn't part of valid UTF-8 becomes the escape
// \udcXX, control characters are escaped, and all else is written unchanged: the result is valid
// JSON whatever the text.
SORVIK_EXPORT void AppendJsonString(std::string& json, std::string_view text);
SORVIK_EXPORT void AppendJsonString(std::string& json, std::u16string_view text);

}  // namespace Hestra
