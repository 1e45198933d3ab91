// SPDX-License-Identifier: MIT
#include "providers/cards/Neighbours.h"

#include "foundation/platform/Volumes.h"

namespace Sorvik {

bool MayLookAt(const Hestra::UTF16String& neighbour, const Hestra::UTF16String& card) {
  const std::string path = Hestra::MakeStdString(neighbour);
  if (!platform::IsOnNetworkMount(path)) return true;
  // Two folders beside each other lie on one mount unless either is a mount point.
  return !platform::IsMountPoint(path) && !platform::IsMountPoint(Hestra::MakeStdString(card));
}

}  // namespace Sorvik
