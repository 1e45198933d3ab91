// SPDX-License-Identifier: MIT
// Digests that file formats use as identifiers. Not for cryptographic purposes.
#pragma once

#include <string>
#include <string_view>

namespace Sorvik::foundation {

// MD5 as 32 hex digits in upper case.
std::string MD5Hex(std::string_view bytes);

}  // namespace Sorvik::foundation
