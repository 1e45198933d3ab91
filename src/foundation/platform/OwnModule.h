// SPDX-License-Identifier: MIT
// Modules of the library that are loaded on first use.
#pragma once

#include <string>

namespace Sorvik::platform {

// Returns the function `name` of the module `file` in the folder SorvikProvider next to the
// library. The module stays loaded. Throws std::runtime_error with the loader's message if the
// module or the function is missing. Any thread.
void (*FunctionOfOwnModule(const std::string& file, const char* name))();

}  // namespace Sorvik::platform
