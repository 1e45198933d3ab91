// SPDX-License-Identifier: MIT
// Mounts and volumes of the running system. Any thread.
#pragma once

#include <string>
#include <vector>

#include "foundation/platform/Volumes.h"

namespace Sorvik::foundation {

// The volumes of the running system, listed at most once within a call scope; see
// platform::ListVolumes.
std::vector<platform::Volume> ListVolumes();

// True if `path` is the top of a mounted file system.
bool IsMountPoint(const std::string& path);

}  // namespace Sorvik::foundation
