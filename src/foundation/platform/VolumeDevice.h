// SPDX-License-Identifier: MIT
// What is known about the device behind a mount. Any thread.
#pragma once

#include <string>

#include "foundation/platform/Volumes.h"

namespace Sorvik::platform {

// The number of the block device that a mount stands on; 0:0 where there is none.
struct DeviceNumber {
  unsigned major = 0;
  unsigned minor = 0;

  bool IsBlockDevice() const noexcept { return major != 0; }
};
DeviceNumber DeviceOf(const Mount& mount);

// False if the device is gone or has no medium: a card that was pulled stays in the mount table.
bool HasMedium(const VolumeSources& sources, DeviceNumber device);

VolumeKind KindOfLocal(const VolumeSources& sources, const MountTable& table, const Mount& mount,
                       DeviceNumber device);

// The identifier of the file system on the device, empty if it isn't known.
std::string SerialOf(const VolumeSources& sources, DeviceNumber device);

// The label that the file system tells, or else the device database, or else the name of a mount
// point below the folders where desktops mount media; `serial` is no label there.
std::string LabelOf(const VolumeSources& sources, const Mount& mount, DeviceNumber device,
                    const std::string& serial);

}  // namespace Sorvik::platform
