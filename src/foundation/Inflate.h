// SPDX-License-Identifier: MIT
// Decompression of zlib data.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Sorvik::foundation {

// Decompresses a zlib stream. Returns an empty string if it is invalid or larger than `maxBytes`.
std::string Inflate(std::string_view packed, std::size_t maxBytes);

}  // namespace Sorvik::foundation
