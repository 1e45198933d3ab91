// SPDX-License-Identifier: MIT
// Shares that a desktop session reaches through its gvfs mount. Any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/platform/Volumes.h"

namespace Sorvik::platform {

// The URL that the folder name of a share stands for, such as "smb://server/share" for
// "smb-share:server=server,share=share"; the name itself if it isn't of that form.
std::string UrlOfGvfsShare(std::string_view folderName);

// Adds the shares of this user's gvfs mounts. Only the mount's own folder is read, which the
// session answers by itself; no share is touched.
void AddGvfsShares(const VolumeSources& sources, const MountTable& table,
                   std::vector<Volume>& volumes);

}  // namespace Sorvik::platform
