// SPDX-License-Identifier: MIT
// Volumes with a user's files: mounted file systems and network shares. Nothing on a network file
// system is accessed, so an unreachable server can't block the caller. Any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "foundation/platform/MountTable.h"

namespace Sorvik::platform {

enum class VolumeKind {
  kUnknown,
  kInvalid,
  kRemovable,
  kFixed,
  kRemote,
  kOptical,
  kRAMDisk,
};

struct Volume {
  std::string mountPoint;  // where its contents can be opened
  std::string label;       // of the file system; empty if it has none
  std::string serial;      // the file system's UUID as udev writes it
  VolumeKind kind = VolumeKind::kUnknown;
  bool isNetwork = false;
  // Of network volumes: the share's name, such as "//server/share".
  std::string remoteName;
  // False for a share of a desktop session that has no mount point of its own (gvfs).
  bool hasLocalName = true;
};

// Where information about devices comes from. The defaults are the running system; tests replace
// them.
struct VolumeSources {
  std::string systemTree = "/sys";
  // Prepended to a mount point or a folder of shares before it is accessed.
  std::string filePrefix;
  // A udev property of a block device; empty if it is missing.
  std::function<std::string(unsigned major, unsigned minor, const char* name)> deviceProperty;

  static VolumeSources OfThisSystem();
};

// Returns the local volumes in the order of `table`, then the network volumes. Skips system mounts,
// further mounts of the same folder, mounts without a medium and mounts on files; "/" is always
// listed if `table` has it.
std::vector<Volume> ListVolumes(const VolumeSources& sources, const MountTable& table);

// True if `path` is the top of a mounted file system; `table` is that of the running system.
bool IsMountPoint(const std::string& path, const MountTable& table);

}  // namespace Sorvik::platform
