// SPDX-License-Identifier: MIT
// Mounts and volumes of the running system, read at most once within a call scope. Any thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "foundation/platform/MountTable.h"
#include "foundation/platform/Volumes.h"

namespace Sorvik::foundation {

// The kernel's mount table. Always has an entry for "/".
std::shared_ptr<const platform::MountTable> CurrentMountTable();

// The volumes of the running system; see platform::ListVolumes.
std::vector<platform::Volume> ListVolumes();

// True if `path` is the top of a mounted file system.
bool IsMountPoint(const std::string& path);

// True if the absolute path `path` is on a mount of a network file system. Lexical: compares the
// path with the mount table and accesses nothing.
bool IsOnNetworkMount(const std::string& path);

}  // namespace Sorvik::foundation
