// SPDX-License-Identifier: MIT
#include "providers/cards/Neighbours.h"

#include "foundation/platform/ShareAccess.h"

namespace Sorvik {

bool CanAccessWithoutBlocking(const std::string& neighbour, const std::string& card) {
  return platform::ShareAccess::CurrentOr(card)->OtherShareAt(neighbour).share == nullptr;
}

}  // namespace Sorvik
