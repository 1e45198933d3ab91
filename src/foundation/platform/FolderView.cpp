// SPDX-License-Identifier: MIT
#include "foundation/platform/FolderView.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "foundation/platform/Descriptor.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/MountTable.h"
#include "foundation/platform/NameOrder.h"
#include "foundation/platform/NativeAttributes.h"
#include "foundation/platform/ShareAccess.h"

namespace Sorvik::platform {
namespace {

constexpr unsigned kAllBits = STATX_BASIC_STATS | STATX_BTIME;
// Mounts nothing, and doesn't make a network file system contact its server.
constexpr int kStatFlags = AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;
// Bits that come from a file system that stores attributes.
constexpr std::uint32_t kStoredBits =
    attribute::kReadOnly | attribute::kHidden | attribute::kSystem | attribute::kArchive |
    attribute::kNormal | attribute::kTemporary | attribute::kSparse | attribute::kLink |
    attribute::kCompressed | attribute::kOffline | attribute::kNotIndexed | attribute::kEncrypted;

// The names of a folder, in the blocks that the kernel returned.
class NameList {
 public:
  // False if the folder can't be read to its end or `stop` returned true.
  bool Read(int folder, const std::function<bool()>& stop) {
    // Most folders fit in the first block; larger blocks save system calls for large folders.
    std::size_t size = 32 << 10;
    while (!stop || !stop()) {
      // Uninitialised on purpose: the kernel fills it.
      blocks_.emplace_back(new char[size]);
      const ssize_t filled = getdents64(folder, blocks_.back().get(), size);
      if (filled < 0) return false;
      if (filled == 0) {
        SortByName(names_, NameOrder::kBytes);
        return true;
      }
      AddBlock(blocks_.back().get(), static_cast<std::size_t>(filled));
      size = 256 << 10;
    }
    return false;
  }

  const std::vector<FolderName>& Names() const noexcept { return names_; }

 private:
  static ItemType TypeOf(unsigned char type) noexcept {
    switch (type) {
      case DT_REG:
        return ItemType::kRegular;
      case DT_DIR:
        return ItemType::kDirectory;
      case DT_LNK:
        return ItemType::kLink;
      case DT_UNKNOWN:
        return ItemType::kUnknown;
      default:
        return ItemType::kDevice;
    }
  }

  void AddBlock(const char* block, std::size_t filled) {
    for (std::size_t at = 0; at < filled;) {
      const auto* entry = reinterpret_cast<const dirent64*>(block + at);
      at += entry->d_reclen;
      const std::string_view name = entry->d_name;
      if (name != "." && name != "..") names_.push_back({name, TypeOf(entry->d_type)});
    }
  }

  std::vector<std::unique_ptr<char[]>> blocks_;
  std::vector<FolderName> names_;
};

std::string PathOfDescriptor(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

FileTime TimeOf(const statx_timestamp& time) { return {time.tv_sec, time.tv_nsec}; }

// True for file systems that report the allocated blocks of every file. On others, such as those in
// user space, no blocks may mean that the number is unknown.
bool ReportsBlocks(const struct statfs& facts) {
  constexpr std::uint32_t kZfsMagic = 0x2FC12FC1;
  constexpr std::uint32_t kBcachefsMagic = 0xCA451A4E;
  static constexpr std::array<std::uint32_t, 10> kMagics = {
      EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC,   BTRFS_SUPER_MAGIC,    F2FS_SUPER_MAGIC,
      TMPFS_MAGIC,      NILFS_SUPER_MAGIC, REISERFS_SUPER_MAGIC, OVERLAYFS_SUPER_MAGIC,
      kZfsMagic,        kBcachefsMagic};
  return std::ranges::find(kMagics, static_cast<std::uint32_t>(facts.f_type)) != kMagics.end();
}

std::uint64_t BlocksOf(std::uint64_t size) { return size / 512 + (size % 512 != 0 ? 1 : 0); }

// True if the file has holes by its number of blocks, but the file system may not
// report blocks.
bool HasNoBlocks(const struct statx& facts) {
  return S_ISREG(facts.stx_mode) && facts.stx_size > 0 && facts.stx_blocks == 0;
}

std::uint32_t ModeBits(const struct statx& facts) {
  std::uint32_t bits = 0;
  if (S_ISDIR(facts.stx_mode)) bits |= attribute::kDirectory;
  const bool immutable = (facts.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
  if ((facts.stx_mode & 0222) == 0 || immutable) bits |= attribute::kReadOnly;
  if ((facts.stx_attributes & STATX_ATTR_COMPRESSED) != 0) bits |= attribute::kCompressed;
  if ((facts.stx_attributes & STATX_ATTR_ENCRYPTED) != 0) bits |= attribute::kEncrypted;
  const bool hasHoles = S_ISREG(facts.stx_mode) && (facts.stx_mask & STATX_BLOCKS) != 0 &&
                        facts.stx_blocks < BlocksOf(facts.stx_size);
  if (hasHoles && (bits & attribute::kCompressed) == 0) bits |= attribute::kSparse;
  return bits;
}

// The facts of the file that a path leads to, or the error.
struct TargetFacts {
  int error = 0;
  struct statx facts = {};
};

// Reads the facts of what `path`, relative to `folder`, leads to. If the file system doesn't report
// blocks, leaves them out.
TargetFacts ReadTarget(int folder, const std::string& path) {
  TargetFacts target;
  if (statx(folder, path.c_str(), kStatFlags, kAllBits, &target.facts) != 0) {
    target.error = errno;
    return target;
  }
  struct statfs system;
  const std::string full = folder == AT_FDCWD ? path : PathOfDescriptor(folder) + kSeparator + path;
  if (HasNoBlocks(target.facts) && !(statfs(full.c_str(), &system) == 0 && ReportsBlocks(system))) {
    target.facts.stx_mask &= ~static_cast<unsigned>(STATX_BLOCKS);
  }
  return target;
}

class SystemFolder final : public FolderView {
 public:
  SystemFolder(int descriptor, std::shared_ptr<ShareAccess> access)
      : descriptor_(descriptor),
        native_(NativeAttributes::Of(descriptor)),
        access_(std::move(access)) {
    if (!access_->HasShares()) return;
    path_ = RealPathOf(descriptor);
    for (const Mount& mount : access_->Table().Mounts()) {
      const auto slash = mount.mountPoint.rfind('/');
      if (mount.isNetwork && PathTo(mount.mountPoint.substr(slash + 1)) == mount.mountPoint) {
        shares_.push_back(&mount);
      }
    }
  }

  bool ReadNames(const std::function<bool()>& stop) {
    return names_.Read(descriptor_.Number(), stop);
  }

  const std::vector<FolderName>& Names() const override { return names_.Names(); }
  bool StoresAttributes() const override { return native_ != nullptr; }

  FactsState ReadFacts(const FolderName& item, bool withShortName,
                       FileFacts& facts) const override {
    facts = FileFacts();
    if (const Mount* share = ShareAt(item.name)) return ReadMountPoint(*share, item.name, facts);
    struct statx own;
    const char* name = item.name.data();
    const bool isLink = item.type == ItemType::kLink;
    if (isLink) return ReadLink(item.name, facts);
    if (!Stat(name, own)) return Failure();
    if (S_ISLNK(own.stx_mode)) return ReadLink(item.name, facts);
    if (HasNoBlocks(own) && !FolderReportsBlocks()) own.stx_mask &= ~unsigned{STATX_BLOCKS};
    Fill(own, false, item.name, facts);
    AddNative(name, own, withShortName, facts);
    SetNormal(own, facts);
    return FactsState::kKnown;
  }

 private:
  static std::string RealPathOf(int descriptor) {
    std::array<char, kPathLimit> text;
    const ssize_t size = readlink(PathOfDescriptor(descriptor).c_str(), text.data(), text.size());
    return size < 0 ? std::string() : std::string(text.data(), static_cast<std::size_t>(size));
  }

  static FactsState Failure() {
    return errno == ENOENT ? FactsState::kMissing : FactsState::kRefused;
  }

  static std::uint32_t DotBit(std::string_view name) {
    return name.substr(0, 1) == "." ? attribute::kHidden : 0;
  }

  bool Stat(const char* name, struct statx& facts) const {
    const int flags = kStatFlags | AT_SYMLINK_NOFOLLOW;
    return statx(descriptor_.Number(), name, flags, kAllBits, &facts) == 0;
  }

  // The facts of what the link leads to, or its own if the target is missing.
  FactsState ReadLink(std::string_view name, FileFacts& facts) const {
    if (access_->HasShares()) {
      const std::string path = PathTo(name);
      const auto place = access_->OtherShareAt(path);
      if (place.share != nullptr) return ReadOnShare(*place.share, path, name, facts);
    }
    TargetFacts target = ReadTarget(descriptor_.Number(), std::string(name));
    if (target.error != 0 && !Stat(name.data(), target.facts)) return Failure();
    Fill(target.facts, true, name, facts);
    SetNormal(target.facts, facts);
    return FactsState::kKnown;
  }

  // The facts of the target of a link, if its share answers.
  FactsState ReadOnShare(const Mount& share, const std::string& path, std::string_view name,
                         FileFacts& facts) const {
    const auto target =
        access_->Ask<TargetFacts>(share, [path] { return ReadTarget(AT_FDCWD, path); });
    if (target && target->error == 0) {
      Fill(target->facts, true, name, facts);
      return FactsState::kKnown;
    }
    struct statx own;
    if (target) {
      if (!Stat(name.data(), own)) return Failure();
      Fill(own, true, name, facts);
      return FactsState::kKnown;
    }
    facts.attributes = attribute::kLink | DotBit(name);
    facts.size = std::nullopt;
    return FactsState::kUnresponsive;
  }

  FactsState ReadMountPoint(const Mount& share, std::string_view name, FileFacts& facts) const {
    const auto target = access_->Ask<TargetFacts>(
        share, [path = share.mountPoint] { return ReadTarget(AT_FDCWD, path); });
    if (target && target->error == 0) {
      Fill(target->facts, false, name, facts);
      return FactsState::kKnown;
    }
    facts.attributes = attribute::kDirectory | DotBit(name);
    return FactsState::kUnresponsive;
  }

  bool FolderReportsBlocks() const {
    if (!reportsBlocks_) {
      struct statfs system;
      reportsBlocks_ = fstatfs(descriptor_.Number(), &system) == 0 && ReportsBlocks(system);
    }
    return *reportsBlocks_;
  }

  std::string PathTo(std::string_view name) const {
    std::string path = path_ == "/" ? "" : path_;
    return path.append("/").append(name);
  }

  const Mount* ShareAt(std::string_view name) const {
    const auto found = std::ranges::find_if(shares_, [name](const Mount* share) {
      return share->mountPoint.substr(share->mountPoint.rfind('/') + 1) == name;
    });
    return found == shares_.end() ? nullptr : *found;
  }

  static void Fill(const struct statx& own, bool isLink, std::string_view name, FileFacts& facts) {
    const bool dangling = S_ISLNK(own.stx_mode);
    facts.attributes = (dangling ? 0 : ModeBits(own)) | DotBit(name);
    if (isLink) facts.attributes |= attribute::kLink;
    const bool known = S_ISREG(own.stx_mode) || S_ISDIR(own.stx_mode) || isLink;
    if (!known) facts.attributes |= attribute::kDevice;
    facts.size = S_ISDIR(own.stx_mode) ? 0 : own.stx_size;
    facts.accessed = TimeOf(own.stx_atime);
    facts.written = TimeOf(own.stx_mtime);
    if ((own.stx_mask & STATX_BTIME) != 0) facts.created = TimeOf(own.stx_btime);
  }

  static void SetNormal(const struct statx& own, FileFacts& facts) {
    const bool plain = S_ISREG(own.stx_mode) && (facts.attributes & ~attribute::kNormal) == 0;
    facts.attributes = plain ? attribute::kNormal : facts.attributes & ~attribute::kNormal;
  }

  void AddNative(const char* name, const struct statx& own, bool withShortName,
                 FileFacts& facts) const {
    if (!native_ || !(S_ISREG(own.stx_mode) || S_ISDIR(own.stx_mode))) return;
    if (const auto bits = native_->BitsOf(name)) {
      facts.attributes =
          (facts.attributes & (attribute::kDirectory | attribute::kHidden)) | (*bits & kStoredBits);
    }
    if (withShortName) facts.shortName = native_->ShortNameOf(name);
    if (!facts.created) facts.created = native_->CreationOf(name);
  }

  Descriptor descriptor_;
  std::unique_ptr<NativeAttributes> native_;
  std::shared_ptr<ShareAccess> access_;
  mutable std::optional<bool> reportsBlocks_;
  // Set only if shares are mounted: the folder's path without symbolic links, and the shares whose
  // mount points are directly in it.
  std::string path_;
  std::vector<const Mount*> shares_;
  NameList names_;
};

std::unique_ptr<SystemFolder> Open(const std::string& path, int flags) {
  auto access = ShareAccess::CurrentOr(path);
  if (access->OtherShareAt(path).share != nullptr) return nullptr;
  const int descriptor = open(path.c_str(), flags | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  return std::make_unique<SystemFolder>(descriptor, std::move(access));
}

}  // namespace

std::unique_ptr<FolderView> ReadFolder(const std::string& path, const std::function<bool()>& stop) {
  auto folder = Open(path, O_RDONLY | O_NONBLOCK);
  if (!folder || !folder->ReadNames(stop)) return nullptr;
  return folder;
}

std::unique_ptr<FolderView> OpenFolder(const std::string& path) {
  // A folder may be searchable without being readable.
  auto folder = Open(path, O_RDONLY | O_NONBLOCK);
  return folder ? std::move(folder) : Open(path, O_PATH);
}

}  // namespace Sorvik::platform
