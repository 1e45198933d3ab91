// SPDX-License-Identifier: MIT
// Unpacks text that files hold deflated.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Sorvik::foundation {

// The bytes of a zlib stream; empty if it is damaged or holds more than `most` bytes.
std::string Inflate(std::string_view packed, std::size_t most);

}  // namespace Sorvik::foundation
