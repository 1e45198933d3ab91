// SPDX-License-Identifier: MIT
// What a provider implements, as a second base, if its structure can be checked for completeness.
#pragma once

#include <string>

#include "SorvikProvider/cardtools/CardCheck.h"

namespace Sorvik {

class CardChecker {
 public:
  virtual ~CardChecker() = default;
  // The findings for the structure at `path`, which the provider claims. Any thread; opens a call
  // scope of its own.
  virtual StructureFindings CheckStructure(const std::string& path) const = 0;
};

}  // namespace Sorvik
