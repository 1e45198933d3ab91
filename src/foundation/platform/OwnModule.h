// SPDX-License-Identifier: MIT
// Parts of the library that lie in files of their own, loaded when first needed.
#pragma once

#include <string>

namespace Sorvik::platform {

// The function `name` of the module `file` in the folder SorvikProvider beside the library; the
// module stays loaded. Throws std::runtime_error with the loader's words if it isn't there. Any
// thread.
void (*FunctionOfOwnModule(const std::string& file, const char* name))();

}  // namespace Sorvik::platform
