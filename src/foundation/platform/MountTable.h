// SPDX-License-Identifier: MIT
// The kernel's mount table. Lexical only: no mounted file system is accessed, so an unreachable
// server can't block the caller. Any thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Sorvik::platform {

inline constexpr char kKernelMountTable[] = "/proc/self/mountinfo";

struct Mount {
  std::string mountPoint;
  std::string root;  // the mounted folder of the file system; "/" except for bind mounts
  std::string type;
  std::string source;   // a device, or the share's name on a network file system
  std::string options;  // of the file system, comma-separated
  unsigned major = 0;
  unsigned minor = 0;
  int id = 0;
  int parentId = 0;  // the mount that contains the mount point
  // A network file system. Never true for "/": nothing runs if that is unreachable.
  bool isNetwork = false;
  bool hideRequested = false;  // by the mount option x-gvfs-hide
  bool showRequested = false;  // by the mount option x-gvfs-show
};

class MountTable {
 public:
  // Keeps only the mounts that their mount points lead to: a mount is covered by a later one on the
  // same mount point or on a folder above it.
  explicit MountTable(std::vector<Mount> mounts);

  // Reads a file in the format of /proc/self/mountinfo. Returns an empty table if it is missing or
  // malformed.
  static MountTable Read(const std::string& path);
  // Parses `text` in the same format.
  static MountTable Parse(std::string_view text);
  // Returns a copy that has an entry for "/". A process that runs in a chroot has none in the
  // kernel's table, and no table at all without /proc.
  MountTable WithRoot() const;
  // The table of the running system, with its root. Kept for the process and read again after the
  // kernel has reported a change, so that a call usually costs one poll.
  static std::shared_ptr<const MountTable> Current();

  const std::vector<Mount>& Mounts() const noexcept { return mounts_; }
  // The mount whose mount point is `path`; nullptr if there is none. Valid while the table exists.
  const Mount* At(std::string_view path) const noexcept;

  bool HasNetworkMounts() const noexcept { return hasNetworkMounts_; }
  // True if `path` is on or below a mount of a network file system. Lexical.
  bool LeadsToNetwork(std::string_view path) const noexcept;

 private:
  std::vector<Mount> mounts_;
  bool hasNetworkMounts_;
};

// True for the types of network file systems.
bool IsNetworkType(std::string_view type) noexcept;

// True if `path` is `folder` or below it. Lexical.
bool IsAtOrBelow(std::string_view path, std::string_view folder) noexcept;

}  // namespace Sorvik::platform
