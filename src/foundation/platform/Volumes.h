// SPDX-License-Identifier: MIT
// The places for media that a user would name: mounted file systems and shares. Nothing on a
// network file system is touched here, so that a server that is gone can't hold the caller. Any
// thread.
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
  std::string label;       // empty if it has none
  std::string serial;      // its file system's identifier, as the device database writes it
  VolumeKind kind = VolumeKind::kUnknown;
  bool isNetwork = false;
  // Of network volumes: what the system calls the share, such as "//server/share".
  std::string remoteName;
  // False for a share that a desktop session reaches without a mount of its own.
  bool hasLocalName = true;
};

// Where the facts come from; the defaults are the running system. Tests put their own in place.
struct VolumeSources {
  std::string mountTable = kKernelMountTable;
  std::string systemTree = "/sys";
  // Put in front of a mount point, or a folder of shares, before it is looked at.
  std::string filePrefix;
  // A property that the device database has about a block device, empty if none.
  std::function<std::string(unsigned major, unsigned minor, const char* name)> deviceProperty;

  static VolumeSources OfThisSystem();
};

// Local volumes in order of the mount table, then network ones. Mounts of the system's own, second
// mounts of what is there already, mounts whose medium is gone and mounts on files are left out;
// "/" is always there.
std::vector<Volume> ListVolumes(const VolumeSources& sources);
// Those of the running system; within a call scope they are looked up once.
std::vector<Volume> ListVolumes();

// True if `path` is the top of a mounted file system.
bool IsMountPoint(const std::string& path);
// True if `path`, an absolute path, lies on a mount of a network file system. By its text alone.
bool IsOnNetworkMount(const std::string& path);

}  // namespace Sorvik::platform
