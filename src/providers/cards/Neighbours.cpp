// SPDX-License-Identifier: MIT
#include "providers/cards/Neighbours.h"

#include "foundation/platform/Volumes.h"

namespace Sorvik {

bool CanAccessWithoutBlocking(const std::string& neighbour, const std::string& card) {
  if (!platform::IsOnNetworkMount(neighbour)) return true;
  // Two sibling folders are on the same mount unless one of them is a mount point.
  return !platform::IsMountPoint(neighbour) && !platform::IsMountPoint(card);
}

}  // namespace Sorvik
