// SPDX-License-Identifier: MIT
// Files that are nothing but serialised XMP, told by their extension or document element.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kPlainXMPReader;

// Whether `path` has the extension of such a file, in any case.
bool IsPlainXMP(std::string_view path) noexcept;

}  // namespace Sorvik::xmp
