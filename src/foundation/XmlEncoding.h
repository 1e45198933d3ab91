// SPDX-License-Identifier: MIT
// Character encodings of XML files and XMP packets.
#pragma once

#include <string>
#include <string_view>

namespace Sorvik::foundation {

// Converts text to UTF-8 without a byte order mark. UTF-8, UTF-16 and UTF-32 of both byte orders
// are detected by their byte order mark, else by the encoding of a leading "<". Other text is
// decoded by the encoding in its XML declaration, else as Latin-1, which some writers produce.
// Control characters that XML doesn't allow, and character references to them, become spaces. Never
// fails.
std::string ToUTF8(std::string_view bytes);

}  // namespace Sorvik::foundation
