// SPDX-License-Identifier: MIT
// Building and reading field values.
#pragma once

#include <string>
#include <vector>

#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik {

// Returns a list value with the paths as strings.
any_regular_t PathList(std::vector<std::string> paths);
any_regular_t PathList(const std::vector<UTF16String>& paths);

// The text of a field; empty if the entry lacks it or if it holds no text.
std::string TextOf(const FieldValueMap& fields, const std::string& name);

}  // namespace Sorvik
