// SPDX-License-Identifier: MIT
// Decides which paths may be accessed on the caller's thread. A server that doesn't answer blocks
// every system call on its share, so an operation accesses on its own thread only the share that
// contains the path that it was called with. Any other share, met through a symbolic link or a
// mount point, is accessed on a ShareThread, with a timeout.
//
// Symbolic links are resolved here component by component with readlink, which doesn't access what
// a link points to.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "foundation/platform/MountTable.h"
#include "foundation/platform/ShareThread.h"

namespace Sorvik::platform {

// Thrown instead of accessing a share other than the operation's own, if the ShareAccess is set to
// throw.
struct OtherShareAccess {};

// The accesses of one operation. Belongs to one thread.
class ShareAccess {
 public:
  enum class FinalLink { kFollow, kKeep };

  // A share that a path leads to.
  struct Place {
    const Mount* share = nullptr;  // nullptr: the path may be accessed on this thread
    bool isMountPoint = false;     // the path is the mount point itself
  };

  // Time for the first answer of a share and for the facts of a file, and time to open, list or
  // read once the share has answered.
  static constexpr std::chrono::milliseconds kProbeTimeout{100};
  static constexpr std::chrono::milliseconds kTransferTimeout{2000};

  explicit ShareAccess(std::string operationPath) : operationPath_(std::move(operationPath)) {}
  // For another thread of the same operation. Has the results of `operation`, and accesses no share
  // other than the operation's own: that throws OtherShareAccess.
  static std::shared_ptr<ShareAccess> ForOwnShare(const ShareAccess& operation);

  // The object of the operation with a ShareScope on this thread; nullptr without one.
  static std::shared_ptr<ShareAccess> Current();
  // The same, or a new object for an operation on `path`.
  static std::shared_ptr<ShareAccess> CurrentOr(const std::string& path);

  // False if no share is mounted: every path may be accessed.
  bool HasShares() { return Table().HasNetworkMounts(); }
  const MountTable& Table();

  // The first share on the way to `path` other than the share that the operation's own path is on.
  Place OtherShareAt(const std::string& path, FinalLink final = FinalLink::kFollow);
  // True if `path` is the mount point of any share, and not a link to it.
  bool IsShareMountPoint(const std::string& path);

  // Saves a readlink for each item of `folder`: none of them is a symbolic link.
  void NoteFolderWithoutLinks(const std::string& folder) {
    if (HasShares()) withoutLinks_.insert(folder);
  }

  // Runs `call` on the thread of the share. Returns nullopt if the share doesn't answer in time or
  // hasn't answered earlier in this operation. `call` owns what it uses.
  template <class Result>
  std::optional<Result> Ask(const Mount& share, std::function<Result()> call,
                            std::chrono::milliseconds timeout = kProbeTimeout) {
    return ContactOf(share).thread->Ask(std::move(call), timeout);
  }
  // True if OtherShareAccess was thrown. Whoever catches it unknowingly gets a wrong result.
  bool HasRefused() const noexcept { return hasRefused_; }
  void ClearRefused() noexcept { hasRefused_ = false; }
  // Returns the thread of the share if its server answers, else nullptr.
  std::shared_ptr<ShareThread> AnsweringThread(const Mount& share);
  // True if the share hasn't answered in this operation.
  bool IsUnresponsive(const Mount& share) { return ContactOf(share).thread->IsAbandoned(); }

 private:
  struct Resolved {
    std::string path;              // without symbolic links up to the share
    const Mount* share = nullptr;  // the first one on the way other than ownShare_
  };

  Resolved Resolve(const std::string& path, FinalLink final);
  Resolved ResolveFolder(const std::string& path);
  Resolved ResolveItem(const Resolved& folder, const std::string& folderPath, std::string_view name,
                       FinalLink final);
  void FindOwnShare();
  struct Contact {
    std::shared_ptr<ShareThread> thread;
    bool answered = false;
  };
  Contact& ContactOf(const Mount& share);

  std::string operationPath_;
  std::shared_ptr<const MountTable> table_;
  // The first share on the way to operationPath_; nullptr if there is none.
  const Mount* ownShare_ = nullptr;
  bool ownShareKnown_ = false;
  bool ownShareOnly_ = false;
  bool hasRefused_ = false;
  int linksLeft_ = 0;
  std::unordered_map<std::string, Resolved> folders_;
  std::unordered_set<std::string> withoutLinks_;
  std::map<std::string, Contact> contacts_;
};

// An object on the stack of an operation that was called with `path`; the functions of FileSystem.h
// find it through a thread-local pointer. Scopes nest: the outermost one counts.
class ShareScope {
 public:
  explicit ShareScope(const std::string& path);
  // Uses `access`, on a thread without a scope.
  explicit ShareScope(std::shared_ptr<ShareAccess> access) noexcept;
  ~ShareScope();
  ShareScope(const ShareScope&) = delete;
  ShareScope& operator=(const ShareScope&) = delete;

 private:
  bool outermost_;
};

}  // namespace Sorvik::platform
