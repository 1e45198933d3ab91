// SPDX-License-Identifier: MIT
// The kernel's table of mounts. Everything here is text: no mounted file system is touched, so that
// a server that is gone can't hold the caller. Any thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Sorvik::platform {

inline constexpr char kKernelMountTable[] = "/proc/self/mountinfo";

struct Mount {
  std::string mountPoint;
  std::string root;  // the folder of the file system that is mounted, "/" but for binds
  std::string type;
  std::string source;   // a device, or what a network file system calls its share
  std::string options;  // those of the file system, comma separated
  unsigned major = 0;
  unsigned minor = 0;
  // A network file system. Never "/", which must answer for anything to run at all.
  bool isNetwork = false;
  bool askedHidden = false;  // by an option of whoever set the mount up
  bool askedShown = false;
};

class MountTable {
 public:
  // Of several mounts at one place only the last one, which is what can be reached, is kept.
  explicit MountTable(std::vector<Mount> mounts);

  // The table in the file at `path`, in the form of /proc/self/mountinfo; empty if there is none.
  static MountTable Read(const std::string& path);
  // The table in `text`, of the same form.
  static MountTable Parse(std::string_view text);
  // The same table with a mount at "/" of which nothing else is known, unless it has one. A process
  // whose root was changed finds none in the kernel's table, and no table at all without /proc.
  MountTable WithRoot() const;
  // The running system's table, with its root, read once within a call scope.
  static std::shared_ptr<const MountTable> Current();

  const std::vector<Mount>& Mounts() const noexcept { return mounts_; }
  // The mount at exactly this place, or null. Borrowed.
  const Mount* At(std::string_view path) const noexcept;
  // The mount that holds the absolute path by its text, or null. Links are not followed. Borrowed.
  const Mount* Holding(std::string_view path) const noexcept;

  bool HasNetworkMounts() const noexcept { return hasNetworkMounts_; }
  // True if going to `path`, by its text, leads through a mount of a network file system.
  bool LeadsToNetwork(std::string_view path) const noexcept;
  // The same, unless `from` lies on that very mount.
  bool LeadsToOtherNetwork(std::string_view path, std::string_view from) const noexcept {
    return LeadsToNetwork(path) && Holding(path) != Holding(from);
  }

 private:
  std::vector<Mount> mounts_;
  bool hasNetworkMounts_;
};

// A type of file system whose contents come over a network.
bool IsNetworkType(std::string_view type) noexcept;

// True if `path` is `folder` or lies below it, by text.
bool IsAtOrBelow(std::string_view path, std::string_view folder) noexcept;

}  // namespace Sorvik::platform
