// SPDX-License-Identifier: MIT
#include "providers/cards/Neighbours.h"

#include "foundation/Mounts.h"

namespace Sorvik {

bool CanAccessWithoutBlocking(const std::string& neighbour, const std::string& card) {
  if (!foundation::IsOnNetworkMount(neighbour)) return true;
  // Two sibling folders are on the same mount unless one of them is a mount point.
  return !foundation::IsMountPoint(neighbour) && !foundation::IsMountPoint(card);
}

}  // namespace Sorvik
