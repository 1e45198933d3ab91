// SPDX-License-Identifier: MIT
// The named values of a JSON text, whatever its structure. In a source of its own, which is the
// only one that includes the JSON library.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace Sorvik::xmp {

// The texts, numbers and booleans ("true", "false") by the names that they have in objects at any
// depth; the first value of a name counts. Values in arrays have no name. After a fault, or below a
// depth of 32, the values in front of it are returned.
std::map<std::string, std::string> ReadNamedValues(std::string_view json);

}  // namespace Sorvik::xmp
