// SPDX-License-Identifier: MIT
// Digests by which parts of a file name each other. Not for anything that must be secret or safe.
#pragma once

#include <string>
#include <string_view>

namespace Sorvik::foundation {

// MD5 as 32 hex digits in upper case.
std::string MD5Hex(std::string_view bytes);

}  // namespace Sorvik::foundation
