// SPDX-License-Identifier: MIT
// UTF-16 strings and conversions. The interface uses UTF-8; some path operations use UTF-16. The
// conversion from bytes to UTF-16 and back is lossless, even for names that aren't valid UTF-8.
#pragma once

#include <string>
#include <string_view>

#include "SorvikProvider/foundation/Export.h"

namespace Hestra {

using UTF16String = std::u16string;

// Converts UTF-8 to UTF-16. A byte that isn't part of valid UTF-8 becomes the lone low surrogate
// U+DC00 + byte. Never fails.
SORVIK_EXPORT UTF16String MakeString(std::string_view utf8);

// The inverse of MakeString. Returns an empty string if the text has any other unpaired surrogate.
SORVIK_EXPORT std::string MakeStdString(std::u16string_view text);

}  // namespace Hestra

namespace tarnwick::utility {

using Hestra::UTF16String;

// The same as MakeString and MakeStdString.
SORVIK_EXPORT UTF16String UTF8to16(std::string_view utf8);
SORVIK_EXPORT std::string UTF16to8(std::u16string_view text);

// Converts each byte to one code unit. For ASCII constants.
SORVIK_EXPORT UTF16String AsciiToUTF16(std::string_view ascii);

// Simple one-to-one Unicode mappings, independent of the locale: the number of code points never
// changes. FoldCase is for case-insensitive comparisons.
SORVIK_EXPORT UTF16String FoldCase(std::u16string_view text);
SORVIK_EXPORT UTF16String LowerCase(std::u16string_view text);
SORVIK_EXPORT UTF16String UpperCase(std::u16string_view text);

}  // namespace tarnwick::utility

namespace Sorvik {

using Hestra::UTF16String;

}  // namespace Sorvik
