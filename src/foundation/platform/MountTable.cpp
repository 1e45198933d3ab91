// SPDX-License-Identifier: MIT
#include "foundation/platform/MountTable.h"

#include <fcntl.h>
#include <libmount/libmount.h>
#include <poll.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <mutex>
#include <set>
#include <unordered_map>
#include <utility>

namespace Sorvik::platform {
namespace {

struct FreeTable {
  void operator()(libmnt_table* table) const noexcept { mnt_unref_table(table); }
};
struct FreeIterator {
  void operator()(libmnt_iter* iterator) const noexcept { mnt_free_iter(iterator); }
};
struct CloseStream {
  void operator()(FILE* stream) const noexcept { std::fclose(stream); }
};
using TablePtr = std::unique_ptr<libmnt_table, FreeTable>;

std::string TextOf(const char* text) { return text == nullptr ? std::string() : text; }

bool HasOption(const char* options, const char* name) {
  return options != nullptr && mnt_optstr_get_option(options, name, nullptr, nullptr) == 0;
}

Mount MountOf(libmnt_fs* entry) {
  Mount mount;
  mount.mountPoint = TextOf(mnt_fs_get_target(entry));
  mount.root = TextOf(mnt_fs_get_root(entry));
  mount.type = TextOf(mnt_fs_get_fstype(entry));
  mount.source = TextOf(mnt_fs_get_source(entry));
  mount.options = TextOf(mnt_fs_get_fs_options(entry));
  const dev_t device = mnt_fs_get_devno(entry);
  mount.major = major(device);
  mount.minor = minor(device);
  mount.id = mnt_fs_get_id(entry);
  mount.parentId = mnt_fs_get_parent_id(entry);
  const char* userOptions = mnt_fs_get_user_options(entry);
  mount.hideRequested = HasOption(userOptions, "x-gvfs-hide");
  mount.showRequested = HasOption(userOptions, "x-gvfs-show");
  return mount;
}

std::vector<Mount> MountsOf(libmnt_table* table) {
  std::vector<Mount> mounts;
  const std::unique_ptr<libmnt_iter, FreeIterator> iterator(mnt_new_iter(MNT_ITER_FORWARD));
  libmnt_fs* entry = nullptr;
  while (iterator && mnt_table_next_fs(table, iterator.get(), &entry) == 0) {
    Mount mount = MountOf(entry);
    if (!mount.mountPoint.empty() && mount.mountPoint.front() == '/') {
      mounts.push_back(std::move(mount));
    }
  }
  return mounts;
}

// Finds the mounts that are covered by another one. A path is looked up from the mount that
// contains it, so a mount is covered if its parent mount has another child on a folder above, or if
// its parent mount is covered itself.
class CoveredMounts {
 public:
  explicit CoveredMounts(const std::vector<Mount>& mounts) {
    for (const Mount& mount : mounts) {
      byId_.emplace(mount.id, &mount);
      children_.emplace(mount.parentId, mount.mountPoint);
    }
  }

  bool Contain(const Mount& mount) const {
    const Mount* current = &mount;
    for (std::size_t i = 0; i < byId_.size(); ++i) {
      const auto parent = byId_.find(current->parentId);
      // The top of a table has no known parent.
      if (parent == byId_.end() || parent->second == current) return false;
      if (HasSiblingAbove(*current)) return true;
      current = parent->second;
    }
    return false;
  }

 private:
  bool HasSiblingAbove(const Mount& mount) const {
    std::string folder = mount.mountPoint;
    while (folder.size() > 1) {
      folder.resize(std::max<std::size_t>(folder.rfind('/'), 1));
      if (children_.contains({mount.parentId, folder})) return true;
    }
    return false;
  }

  std::unordered_map<int, const Mount*> byId_;
  std::set<std::pair<int, std::string>> children_;
};

void DropCovered(std::vector<Mount>& mounts) {
  const CoveredMounts covered(mounts);
  std::vector<Mount> reachable;
  for (const Mount& mount : mounts) {
    if (!covered.Contain(mount)) reachable.push_back(mount);
  }
  mounts = std::move(reachable);
}

// The running system's table with a descriptor that reports changes.
class CurrentTable {
 public:
  std::shared_ptr<const MountTable> Get() {
    const std::lock_guard lock(mutex_);
    if (table_ && !HasChanged()) return table_;
    // Opened before the table is read, so that no change in between is missed.
    if (descriptor_ < 0) descriptor_ = open(kKernelMountTable, O_RDONLY | O_CLOEXEC);
    table_ = std::make_shared<const MountTable>(MountTable::Read(kKernelMountTable).WithRoot());
    return table_;
  }

 private:
  bool HasChanged() {
    if (descriptor_ < 0) return true;
    // A descriptor that came through fork() shares its state with the parent process, and each
    // change is reported to only one of them.
    if (const pid_t process = getpid(); process != process_) {
      close(std::exchange(descriptor_, -1));
      process_ = process;
      return true;
    }
    pollfd change = {descriptor_, POLLPRI, 0};
    return poll(&change, 1, 0) != 0;
  }

  std::mutex mutex_;
  int descriptor_ = -1;
  pid_t process_ = getpid();
  std::shared_ptr<const MountTable> table_;
};

constexpr std::string_view kNetworkTypes[] = {"9p",
                                              "afp",
                                              "afs",
                                              "beegfs",
                                              "ceph",
                                              "cifs",
                                              "coda",
                                              "davfs",
                                              "davfs2",
                                              "fuse.afp",
                                              "fuse.ceph",
                                              "fuse.cephfs",
                                              "fuse.curlftpfs",
                                              "fuse.dav",
                                              "fuse.davfs",
                                              "fuse.davfs2",
                                              "fuse.gcsfuse",
                                              "fuse.gvfsd-fuse",
                                              "fuse.glusterfs",
                                              "fuse.goofys",
                                              "fuse.httpfs",
                                              "fuse.juicefs",
                                              "fuse.mfs",
                                              "fuse.rclone",
                                              "fuse.s3fs",
                                              "fuse.seaweedfs",
                                              "fuse.smbnetfs",
                                              "fuse.sshfs",
                                              "fuse.wdfs",
                                              "glusterfs",
                                              "lustre",
                                              "ncpfs",
                                              "nfs",
                                              "nfs4",
                                              "orangefs",
                                              "smb3",
                                              "smbfs",
                                              "virtiofs"};

}  // namespace

bool IsNetworkType(std::string_view type) noexcept {
  return std::ranges::find(kNetworkTypes, type) != std::end(kNetworkTypes);
}

bool IsAtOrBelow(std::string_view path, std::string_view folder) noexcept {
  if (folder == "/") return path.substr(0, 1) == "/";
  return path.substr(0, folder.size()) == folder &&
         (path.size() == folder.size() || path[folder.size()] == '/');
}

MountTable::MountTable(std::vector<Mount> mounts) {
  DropCovered(mounts);
  std::unordered_map<std::string, std::size_t> last;
  for (std::size_t i = 0; i < mounts.size(); ++i) last[mounts[i].mountPoint] = i;
  for (std::size_t i = 0; i < mounts.size(); ++i) {
    if (last[mounts[i].mountPoint] != i) continue;
    mounts[i].isNetwork = mounts[i].mountPoint != "/" && IsNetworkType(mounts[i].type);
    mounts_.push_back(std::move(mounts[i]));
  }
  hasNetworkMounts_ = std::any_of(mounts_.begin(), mounts_.end(),
                                  [](const Mount& mount) { return mount.isNetwork; });
}

MountTable MountTable::Read(const std::string& path) {
  const TablePtr table(mnt_new_table());
  if (!table || mnt_table_parse_mtab(table.get(), path.c_str()) != 0) return MountTable({});
  return MountTable(MountsOf(table.get()));
}

MountTable MountTable::Parse(std::string_view text) {
  if (text.empty()) return MountTable({});
  std::string copy(text);
  const TablePtr table(mnt_new_table());
  const std::unique_ptr<FILE, CloseStream> stream(fmemopen(copy.data(), copy.size(), "r"));
  if (!table || !stream || mnt_table_parse_stream(table.get(), stream.get(), "mountinfo") != 0) {
    return MountTable({});
  }
  return MountTable(MountsOf(table.get()));
}

MountTable MountTable::WithRoot() const {
  MountTable table = *this;
  if (table.At("/") == nullptr) {
    Mount root;
    root.mountPoint = "/";
    table.mounts_.insert(table.mounts_.begin(), std::move(root));
  }
  return table;
}

std::shared_ptr<const MountTable> MountTable::Current() {
  // Never destroyed: threads that outlive main() may use it.
  static CurrentTable& current = *new CurrentTable;
  return current.Get();
}

const Mount* MountTable::At(std::string_view path) const noexcept {
  const auto found = std::find_if(mounts_.begin(), mounts_.end(),
                                  [&](const Mount& mount) { return mount.mountPoint == path; });
  return found == mounts_.end() ? nullptr : &*found;
}

bool MountTable::LeadsToNetwork(std::string_view path) const noexcept {
  return hasNetworkMounts_ && std::any_of(mounts_.begin(), mounts_.end(), [&](const Mount& mount) {
           return mount.isNetwork && IsAtOrBelow(path, mount.mountPoint);
         });
}

}  // namespace Sorvik::platform
