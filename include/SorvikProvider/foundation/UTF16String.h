// SPDX-License-Identifier: MIT
// The 16-bit string of path operations, and its conversions. Paths and names travel as UTF-8 at the
// interface and as UTF-16 inside path operations; the way there and back loses nothing, whatever
// bytes a name on disk holds.
#pragma once

#include <string>
#include <string_view>

#include "SorvikProvider/foundation/Export.h"

namespace Hestra {

using UTF16String = std::u16string;

// Gives the UTF-16 form of UTF-8 text. A byte that is no part of valid UTF-8 becomes the lone low
// surrogate U+DC00 + byte, so that names in any bytes survive. Never fails.
SORVIK_EXPORT UTF16String MakeString(std::string_view utf8);

// The reverse of MakeString, with such surrogates turned back into their bytes. Text with any other
// unpaired surrogate can't be converted: the result is empty.
SORVIK_EXPORT std::string MakeStdString(std::u16string_view text);

}  // namespace Hestra

namespace tarnwick::utility {

using Hestra::UTF16String;

// MakeString and MakeStdString under the names of the core library.
SORVIK_EXPORT UTF16String UTF8to16(std::string_view utf8);
SORVIK_EXPORT std::string UTF16to8(std::u16string_view text);

// Each byte becomes one code unit; for constants known to be ASCII.
SORVIK_EXPORT UTF16String AsciiToUTF16(std::string_view ascii);

// Simple one-to-one Unicode mappings, the same in every locale: the length in code points never
// changes. FoldCase is for comparisons regardless of case.
SORVIK_EXPORT UTF16String FoldCase(std::u16string_view text);
SORVIK_EXPORT UTF16String LowerCase(std::u16string_view text);
SORVIK_EXPORT UTF16String UpperCase(std::u16string_view text);

}  // namespace tarnwick::utility

namespace Sorvik {

using Hestra::UTF16String;

}  // namespace Sorvik
