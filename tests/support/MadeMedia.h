// SPDX-License-Identifier: MIT
// Minimal media files: the structure of their container and no essence.
#pragma once

#include <string>
#include <string_view>

namespace sorvik_test {

// The smallest valid file of the container of the extension of `name`; a short text for any
// other name.
std::string MadeMedia(std::string_view name);

}  // namespace sorvik_test
