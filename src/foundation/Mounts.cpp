// SPDX-License-Identifier: MIT
#include "foundation/Mounts.h"

#include "foundation/CallScope.h"

namespace Sorvik::foundation {
namespace {

struct VolumeRecord {
  std::vector<platform::Volume> volumes;
};

}  // namespace

std::shared_ptr<const platform::MountTable> CurrentMountTable() {
  using platform::MountTable;
  return CallScope::Remember<MountTable>(
      "", [] { return MountTable::Read(platform::kKernelMountTable).WithRoot(); });
}

std::vector<platform::Volume> ListVolumes() {
  const auto list = [] {
    return VolumeRecord{
        platform::ListVolumes(platform::VolumeSources::OfThisSystem(), *CurrentMountTable())};
  };
  return CallScope::Remember<VolumeRecord>("", list)->volumes;
}

bool IsMountPoint(const std::string& path) {
  return platform::IsMountPoint(path, *CurrentMountTable());
}

bool IsOnNetworkMount(const std::string& path) { return CurrentMountTable()->LeadsToNetwork(path); }

}  // namespace Sorvik::foundation
