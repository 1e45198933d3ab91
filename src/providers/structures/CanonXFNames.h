// SPDX-License-Identifier: MIT
// The names of a Canon XF card.
#pragma once

#include <cstddef>
#include <string_view>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Sorvik::canonxf {

inline constexpr char16_t kContents[] = u"CONTENTS";
inline constexpr char16_t kClipRoot[] = u"CLIPS001";
inline constexpr std::size_t kClipIdLength = 6;
inline constexpr std::size_t kSpanTitleLength = 8;  // the clip id and the two digits of the span

// Two ASCII letters of either case and four digits.
bool IsClipFolderName(std::u16string_view name);

// The number in the title of a span; 0 if the title has another length or no number.
int GetSpanNumber(std::u16string_view title);

// CONTENTS/CLIPS001 below a card's root.
UTF16String ClipRootOf(const UTF16String& folder);

}  // namespace Sorvik::canonxf
