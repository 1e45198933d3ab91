// SPDX-License-Identifier: MIT
// The block device of a mount. Any thread.
#pragma once

#include <string>

#include "foundation/platform/Volumes.h"

namespace Sorvik::platform {

// The number of the block device of a mount; 0:0 if it has none.
struct DeviceNumber {
  unsigned major = 0;
  unsigned minor = 0;

  bool IsBlockDevice() const noexcept { return major != 0; }
};
DeviceNumber DeviceOf(const Mount& mount);

// False if the device is missing or has no medium: a removed card stays in the mount table.
bool HasMedium(const VolumeSources& sources, DeviceNumber device);

VolumeKind KindOfLocal(const VolumeSources& sources, const MountTable& table, const Mount& mount,
                       DeviceNumber device);

// The UUID of the file system on the device; empty if it is unknown.
std::string SerialOf(const VolumeSources& sources, DeviceNumber device);

// The label of the file system, else that in the udev database, else the name of the mount point
// if it is below /media or /run/media and isn't `serial`. Empty if there is none.
std::string LabelOf(const VolumeSources& sources, const Mount& mount, DeviceNumber device,
                    const std::string& serial);

}  // namespace Sorvik::platform
