// SPDX-License-Identifier: MIT
#include "foundation/platform/Volumes.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

#include "foundation/platform/GvfsShares.h"
#include "foundation/platform/VolumeDevice.h"

namespace Sorvik::platform {
namespace {

// Virtual file systems, and types that other mounts are built on.
bool IsInternalType(const Mount& mount) {
  static constexpr std::array<std::string_view, 28> kTypes = {
      "autofs",     "binfmt_misc", "bpf",           "cgroup",   "cgroup2",   "configfs",
      "cpuset",     "debugfs",     "devpts",        "devtmpfs", "efivarfs",  "fuse.gvfsd-fuse",
      "fuse.lxcfs", "fuse.portal", "fuse.snapfuse", "fusectl",  "hugetlbfs", "mqueue",
      "nfsd",       "nsfs",        "none",          "proc",     "pstore",    "rpc_pipefs",
      "securityfs", "selinuxfs",   "sysfs",         "tracefs"};
  if (mount.mountPoint == "/") return false;
  if (mount.type == "overlay" || mount.type == "squashfs") return true;
  return std::find(kTypes.begin(), kTypes.end(), mount.type) != kTypes.end();
}

bool IsSystemFolder(std::string_view path) {
  static constexpr std::array<std::string_view, 12> kFolders = {
      "/proc", "/sys",  "/dev", "/run",     "/boot",    "/efi",
      "/etc",  "/snap", "/usr", "/var/lib", "/var/run", "/var/snap"};
  if (path.find("/.") != path.npos) return true;
  if (IsAtOrBelow(path, "/run/media") && path != "/run/media") return false;
  return std::any_of(kFolders.begin(), kFolders.end(),
                     [&](std::string_view folder) { return IsAtOrBelow(path, folder); });
}

bool IsForUsers(const Mount& mount) {
  if (mount.mountPoint == "/") return true;
  if (mount.hideRequested || IsInternalType(mount)) return false;
  return mount.showRequested || !IsSystemFolder(mount.mountPoint);
}

// True if the mount point is a folder, or if it can't be found out without blocking.
bool IsFolder(const VolumeSources& sources, const MountTable& table, const Mount& mount) {
  if (table.LeadsToNetwork(mount.mountPoint)) return true;
  struct statx facts;
  const std::string path = sources.filePrefix + mount.mountPoint;
  // Without a sync, the server of a FUSE file system isn't called, so it can't block here.
  if (statx(AT_FDCWD, path.c_str(), AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC, STATX_TYPE, &facts) ==
      0) {
    return S_ISDIR(facts.stx_mode);
  }
  return errno != ENOENT && errno != ENOTDIR;
}

// True if a network mount is mounted on a file, which only bind mounts can be. The parent's listing
// has the type of the covered entry, so the mount itself isn't accessed.
bool CoversFile(const VolumeSources& sources, const MountTable& table, const Mount& mount) {
  if (mount.root == "/") return false;
  const auto slash = mount.mountPoint.rfind('/');
  const std::string folder = mount.mountPoint.substr(0, std::max<std::size_t>(slash, 1));
  if (table.LeadsToNetwork(folder)) return false;
  DIR* stream = opendir((sources.filePrefix + folder).c_str());
  if (stream == nullptr) return false;
  bool isFile = false;
  while (const dirent* entry = readdir(stream)) {
    if (mount.mountPoint.substr(slash + 1) != entry->d_name) continue;
    isFile = entry->d_type != DT_DIR && entry->d_type != DT_UNKNOWN;
    break;
  }
  closedir(stream);
  return isFile;
}

bool IsSameFileSystem(const Mount& a, const Mount& b) {
  return a.major == b.major && a.minor == b.minor && (!a.isNetwork || a.source == b.source);
}

// True if `other` shows all files of `mount` and is the one to keep.
bool IsDuplicateOf(const Mount& mount, const Mount& other, bool otherIsFirst) {
  if (mount.mountPoint == "/" || !IsSameFileSystem(mount, other)) return false;
  if (mount.root != other.root) return IsAtOrBelow(mount.root, other.root);
  return otherIsFirst || other.mountPoint == "/";
}

void DropDuplicates(std::vector<const Mount*>& mounts) {
  std::vector<const Mount*> kept;
  for (std::size_t i = 0; i < mounts.size(); ++i) {
    bool duplicate = false;
    for (std::size_t j = 0; j < mounts.size() && !duplicate; ++j) {
      duplicate = i != j && IsDuplicateOf(*mounts[i], *mounts[j], j < i);
    }
    if (!duplicate) kept.push_back(mounts[i]);
  }
  mounts = std::move(kept);
}

Volume LocalVolume(const VolumeSources& sources, const MountTable& table, const Mount& mount) {
  const DeviceNumber device = DeviceOf(mount);
  Volume volume;
  volume.mountPoint = mount.mountPoint;
  volume.kind = KindOfLocal(sources, table, mount, device);
  volume.serial = SerialOf(sources, device);
  volume.label = LabelOf(sources, mount, device, volume.serial);
  return volume;
}

Volume NetworkVolume(const Mount& mount) {
  Volume volume;
  volume.mountPoint = mount.mountPoint;
  volume.kind = VolumeKind::kRemote;
  volume.isNetwork = true;
  volume.remoteName = mount.source;
  return volume;
}

void AddLocal(const VolumeSources& sources, const MountTable& table, std::vector<Volume>& volumes) {
  std::vector<const Mount*> mounts;
  for (const Mount& mount : table.Mounts()) {
    if (mount.isNetwork || !IsForUsers(mount)) continue;
    const bool exists = IsFolder(sources, table, mount) && HasMedium(sources, DeviceOf(mount));
    if (exists || mount.mountPoint == "/") mounts.push_back(&mount);
  }
  DropDuplicates(mounts);
  for (const Mount* mount : mounts) volumes.push_back(LocalVolume(sources, table, *mount));
}

void AddNetwork(const VolumeSources& sources, const MountTable& table,
                std::vector<Volume>& volumes) {
  std::vector<const Mount*> mounts;
  for (const Mount& mount : table.Mounts()) {
    if (!mount.isNetwork || !IsForUsers(mount) || mount.source.empty()) continue;
    if (!CoversFile(sources, table, mount)) mounts.push_back(&mount);
  }
  DropDuplicates(mounts);
  for (const Mount* mount : mounts) volumes.push_back(NetworkVolume(*mount));
}

}  // namespace

std::vector<Volume> ListVolumes(const VolumeSources& sources, const MountTable& table) {
  std::vector<Volume> volumes;
  AddLocal(sources, table, volumes);
  AddNetwork(sources, table, volumes);
  AddGvfsShares(sources, table, volumes);
  return volumes;
}

bool IsMountPoint(const std::string& path, const MountTable& table) {
  if (table.At(path) != nullptr) return true;
  if (table.LeadsToNetwork(path)) return false;
  // A path through symbolic links differs from the text in the table.
  struct statx facts;
  return statx(AT_FDCWD, path.c_str(), AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC, STATX_TYPE, &facts) ==
             0 &&
         (facts.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

}  // namespace Sorvik::platform
