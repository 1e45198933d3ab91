// SPDX-License-Identifier: MIT
// The encodings in which XML of cameras and XMP packets come.
#pragma once

#include <string>
#include <string_view>

namespace Sorvik::foundation {

// The text in UTF-8, without a byte order mark. UTF-8, UTF-16 and UTF-32 of both byte orders are
// told by their mark, else by how the "<" at the start looks. UTF-8 with broken bytes counts as
// Latin-1 text, which some writers leave; references to control characters that XML doesn't allow,
// and such characters themselves, become blanks. Never fails.
std::string ToUTF8(std::string_view bytes);

}  // namespace Sorvik::foundation
