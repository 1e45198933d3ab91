// SPDX-License-Identifier: MIT
#include "foundation/platform/ShareAccess.h"

#include <sys/vfs.h>
#include <unistd.h>

#include <array>

#include "foundation/platform/FileSystem.h"

namespace Sorvik::platform {
namespace {

// As many as the kernel follows for one path.
constexpr int kMaxLinks = 40;
// Folders whose resolved paths are kept; a tree of links can't fill the memory.
constexpr std::size_t kMaxKeptFolders = 10'000;

thread_local std::shared_ptr<ShareAccess> currentAccess;

// The target of a symbolic link; empty if `path` is none.
std::string TargetOfLink(const std::string& path) {
  std::array<char, kPathLimit> text;
  const ssize_t size = readlink(path.c_str(), text.data(), text.size());
  return size <= 0 ? std::string() : std::string(text.data(), static_cast<std::size_t>(size));
}

std::string Join(std::string_view folder, std::string_view name) {
  std::string path(folder == "/" ? std::string_view() : folder);
  return path.append("/").append(name);
}

std::string ParentOf(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == path.npos || slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace

std::shared_ptr<ShareAccess> ShareAccess::Current() { return currentAccess; }

std::shared_ptr<ShareAccess> ShareAccess::CurrentOr(const std::string& path) {
  return currentAccess ? currentAccess : std::make_shared<ShareAccess>(path);
}

std::shared_ptr<ShareAccess> ShareAccess::ForOwnShare(const ShareAccess& operation) {
  auto access = std::make_shared<ShareAccess>(operation);
  access->contacts_.clear();
  access->ownShareOnly_ = true;
  access->hasRefused_ = false;
  return access;
}

const MountTable& ShareAccess::Table() {
  if (!table_) table_ = MountTable::Current();
  return *table_;
}

ShareAccess::Place ShareAccess::OtherShareAt(const std::string& path, FinalLink final) {
  if (path == operationPath_ || path.substr(0, 1) != "/" || !HasShares()) return {};
  FindOwnShare();
  const Resolved resolved = Resolve(path, final);
  if (resolved.share == nullptr) return {};
  return {resolved.share, resolved.path == resolved.share->mountPoint};
}

bool ShareAccess::IsShareMountPoint(const std::string& path) {
  if (path.substr(0, 1) != "/" || !HasShares()) return false;
  FindOwnShare();
  const Mount* mount = Table().At(Resolve(path, FinalLink::kKeep).path);
  return mount != nullptr && mount->isNetwork;
}

void ShareAccess::FindOwnShare() {
  if (ownShareKnown_) return;
  ownShareKnown_ = true;
  if (operationPath_.substr(0, 1) != "/") return;
  ownShare_ = Resolve(operationPath_, FinalLink::kFollow).share;
  folders_.clear();  // they end at the share
}

ShareAccess::Resolved ShareAccess::Resolve(const std::string& path, FinalLink final) {
  linksLeft_ = kMaxLinks;
  const std::string folder = ParentOf(path);
  if (path == "/") return {path, nullptr};
  return ResolveItem(ResolveFolder(folder), folder, path.substr(path.rfind('/') + 1), final);
}

ShareAccess::Resolved ShareAccess::ResolveFolder(const std::string& path) {
  if (path == "/") return {path, nullptr};
  if (const auto kept = folders_.find(path); kept != folders_.end()) return kept->second;
  const std::string folder = ParentOf(path);
  const std::string name = path.substr(path.rfind('/') + 1);
  Resolved resolved = ResolveItem(ResolveFolder(folder), folder, name, FinalLink::kFollow);
  if (folders_.size() >= kMaxKeptFolders) folders_.clear();
  // A path that exceeds the number of links depends on the path that led here.
  if (linksLeft_ > 0) folders_.emplace(path, resolved);
  return resolved;
}

ShareAccess::Resolved ShareAccess::ResolveItem(const Resolved& folder,
                                               const std::string& folderPath, std::string_view name,
                                               FinalLink final) {
  if (name.empty() || name == ".") return folder;
  if (folder.share != nullptr) return {Join(folder.path, name), folder.share};
  if (name == "..") return {ParentOf(folder.path), nullptr};
  Resolved item{Join(folder.path, name), nullptr};
  const Mount* mount = Table().At(item.path);
  if (mount != nullptr && mount->isNetwork && mount != ownShare_) {
    item.share = mount;
    return item;
  }
  if (final == FinalLink::kKeep || withoutLinks_.contains(folderPath)) return item;
  const std::string target = TargetOfLink(item.path);
  if (target.empty() || --linksLeft_ < 0) return item;
  return ResolveFolder(target.front() == '/' ? target : Join(folder.path, target));
}

ShareAccess::Contact& ShareAccess::ContactOf(const Mount& share) {
  if (ownShareOnly_) {
    hasRefused_ = true;
    throw OtherShareAccess();
  }
  const std::string name = share.source + '\0' + share.mountPoint;
  Contact& contact = contacts_[name];
  if (!contact.thread) contact.thread = std::make_shared<ShareThread>(name);
  return contact;
}

std::shared_ptr<ShareThread> ShareAccess::AnsweringThread(const Mount& share) {
  Contact& contact = ContactOf(share);
  if (!contact.answered) {
    const auto ask = [path = share.mountPoint] {
      // Never answered from a cache. The result doesn't matter, only that there is one.
      struct statfs facts;
      return statfs(path.c_str(), &facts);
    };
    contact.answered = contact.thread->Ask<int>(ask, kProbeTimeout).has_value();
  }
  return contact.answered ? contact.thread : nullptr;
}

ShareScope::ShareScope(const std::string& path) : outermost_(currentAccess == nullptr) {
  if (outermost_) currentAccess = std::make_shared<ShareAccess>(path);
}

ShareScope::ShareScope(std::shared_ptr<ShareAccess> access) noexcept : outermost_(true) {
  currentAccess = std::move(access);
}

ShareScope::~ShareScope() {
  if (outermost_) currentAccess = nullptr;
}

}  // namespace Sorvik::platform
