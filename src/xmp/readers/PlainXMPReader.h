// SPDX-License-Identifier: MIT
// Files that consist of serialised XMP, detected by their extension or document element.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kPlainXMPReader;

// Whether `path` has the extension of such a file, case-insensitive.
bool IsPlainXMP(std::string_view path) noexcept;

}  // namespace Sorvik::xmp
