// SPDX-License-Identifier: MIT
// Network shares in the gvfs mount of a desktop session. Any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/platform/Volumes.h"

namespace Sorvik::platform {

// Returns the URL of a share from its folder name, such as "smb://server/share" for
// "smb-share:server=server,share=share". Returns the name itself if it has another form.
std::string UrlOfGvfsShare(std::string_view folderName);

// Adds the shares of this user's gvfs mounts. Reads only the folder of the mount, which the
// session's daemon serves; accesses no share.
void AddGvfsShares(const VolumeSources& sources, const MountTable& table,
                   std::vector<Volume>& volumes);

}  // namespace Sorvik::platform
