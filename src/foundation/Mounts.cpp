// SPDX-License-Identifier: MIT
#include "foundation/Mounts.h"

#include "foundation/CallScope.h"
#include "foundation/platform/MountTable.h"

namespace Sorvik::foundation {
namespace {

struct VolumeRecord {
  std::vector<platform::Volume> volumes;
};

}  // namespace

std::vector<platform::Volume> ListVolumes() {
  const auto list = [] {
    return VolumeRecord{platform::ListVolumes(platform::VolumeSources::OfThisSystem(),
                                              *platform::MountTable::Current())};
  };
  return CallScope::Remember<VolumeRecord>("", list)->volumes;
}

bool IsMountPoint(const std::string& path) {
  return platform::IsMountPoint(path, *platform::MountTable::Current());
}

}  // namespace Sorvik::foundation
