// SPDX-License-Identifier: MIT
// Names of providers on the command line: the identification, its last component, or a short name
// such as "p2".
#pragma once

#include <string>

#include "SorvikProvider/frame/ProviderWrapper.h"

namespace host {

// True if `name` is a name of the provider. Case-insensitive.
bool IsNamed(const std::string& identification, const std::string& name);

// Returns the provider named `name`. Throws Failure with kUsageError and the nearest names if there
// is none.
const Sorvik::ProviderWrapper& ProviderNamed(const std::string& name);

}  // namespace host
