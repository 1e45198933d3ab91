// SPDX-License-Identifier: MIT
#include "foundation/platform/FolderView.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/MountTable.h"
#include "foundation/platform/NameOrder.h"
#include "foundation/platform/NativeAttributes.h"
#include "foundation/platform/PathText.h"

namespace Sorvik::platform {
namespace {

constexpr unsigned kAllBits = STATX_BASIC_STATS | STATX_BTIME;
// Mounts nothing, and doesn't make a network file system ask its server.
constexpr int kStatFlags = AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;
// Bits that come from a file system that stores attributes.
constexpr std::uint32_t kStoredBits =
    attribute::kReadOnly | attribute::kHidden | attribute::kSystem | attribute::kArchive |
    attribute::kNormal | attribute::kTemporary | attribute::kSparse | attribute::kLink |
    attribute::kCompressed | attribute::kOffline | attribute::kNotIndexed | attribute::kEncrypted;

class Descriptor {
 public:
  explicit Descriptor(int number) noexcept : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Number() const noexcept { return number_; }

 private:
  int number_;
};

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

FileTime TimeOf(const statx_timestamp& time) { return {time.tv_sec, time.tv_nsec}; }

std::uint32_t ModeBits(const struct statx& facts) {
  std::uint32_t bits = 0;
  if (S_ISDIR(facts.stx_mode)) bits |= attribute::kDirectory;
  const bool immutable = (facts.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
  if ((facts.stx_mode & 0222) == 0 || immutable) bits |= attribute::kReadOnly;
  if ((facts.stx_attributes & STATX_ATTR_COMPRESSED) != 0) bits |= attribute::kCompressed;
  if ((facts.stx_attributes & STATX_ATTR_ENCRYPTED) != 0) bits |= attribute::kEncrypted;
  const bool hasHoles =
      S_ISREG(facts.stx_mode) && (facts.stx_mask & STATX_BLOCKS) != 0 &&
      facts.stx_blocks < facts.stx_size / 512 + (facts.stx_size % 512 != 0 ? 1 : 0);
  if (hasHoles && (bits & attribute::kCompressed) == 0) bits |= attribute::kSparse;
  return bits;
}

class SystemFolder final : public FolderView {
 public:
  SystemFolder(int descriptor, std::shared_ptr<const MountTable> table)
      : descriptor_(descriptor),
        native_(NativeAttributes::Of(descriptor)),
        table_(std::move(table)) {
    if (!table_->HasNetworkMounts()) return;
    path_ = RealPathOf(descriptor);
    for (const Mount& mount : table_->Mounts()) {
      const auto slash = mount.mountPoint.rfind('/');
      if (mount.isNetwork && PathTo(mount.mountPoint.substr(slash + 1)) == mount.mountPoint) {
        networkMounts_.push_back(mount.mountPoint.substr(slash + 1));
      }
    }
  }

  bool ReadNames(const std::function<bool()>& stop) {
    return names_.Read(descriptor_.Number(), stop);
  }

  const std::vector<FolderName>& Names() const override { return names_.Names(); }
  bool StoresAttributes() const override { return native_ != nullptr; }

  bool CanAccessWithoutBlocking(const FolderName& item) const override {
    if (!table_->HasNetworkMounts()) return true;
    if (IsNetworkMountPoint(item.name)) return false;
    return item.type == ItemType::kRegular || item.type == ItemType::kDirectory ||
           !LinksToOtherNetworkMount(item.name);
  }

  FactsState ReadFacts(const FolderName& item, bool withShortName,
                       FileFacts& facts) const override {
    facts = FileFacts();
    const char* name = item.name.data();
    if (IsNetworkMountPoint(item.name)) {
      facts.attributes = attribute::kDirectory | DotBit(item.name);
      return FactsState::kKnown;
    }
    struct statx own;
    bool isLink = item.type == ItemType::kLink;
    if (!isLink) {
      if (!Stat(name, false, own)) return Failure();
      isLink = S_ISLNK(own.stx_mode);
    }
    if (isLink) {
      struct statx target;
      if (CanAccessWithoutBlocking({item.name, ItemType::kLink}) && Stat(name, true, target)) {
        own = target;
      } else if (!Stat(name, false, own)) {
        return Failure();
      }
    }
    Fill(own, isLink, facts);
    facts.attributes |= DotBit(item.name);
    if (!isLink) AddNative(name, own, withShortName, facts);
    const bool plain = S_ISREG(own.stx_mode) && (facts.attributes & ~attribute::kNormal) == 0;
    facts.attributes = plain ? attribute::kNormal : facts.attributes & ~attribute::kNormal;
    return FactsState::kKnown;
  }

 private:
  static std::string RealPathOf(int descriptor) {
    std::array<char, kPathLimit> text;
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t size = readlink(link.c_str(), text.data(), text.size());
    return size < 0 ? std::string() : std::string(text.data(), static_cast<std::size_t>(size));
  }

  static FactsState Failure() {
    return errno == ENOENT ? FactsState::kMissing : FactsState::kRefused;
  }

  static std::uint32_t DotBit(std::string_view name) {
    return name.substr(0, 1) == "." ? attribute::kHidden : 0;
  }

  bool Stat(const char* name, bool follow, struct statx& facts) const {
    const int flags = kStatFlags | (follow ? 0 : AT_SYMLINK_NOFOLLOW);
    return statx(descriptor_.Number(), name, flags, kAllBits, &facts) == 0;
  }

  std::string PathTo(std::string_view name) const {
    std::string path = path_ == "/" ? "" : path_;
    return path.append("/").append(name);
  }

  bool IsNetworkMountPoint(std::string_view name) const {
    return std::find(networkMounts_.begin(), networkMounts_.end(), name) != networkMounts_.end();
  }

  bool LinksToOtherNetworkMount(std::string_view name) const {
    std::array<char, kPathLimit> text;
    const ssize_t size = readlinkat(descriptor_.Number(), name.data(), text.data(), text.size());
    if (size <= 0) return false;
    const std::string_view link(text.data(), static_cast<std::size_t>(size));
    const std::string joined = link.front() == '/' ? std::string(link) : PathTo(link);
    return table_->LeadsToOtherNetwork(NormalizePath(std::string_view(joined)), path_);
  }

  static void Fill(const struct statx& own, bool isLink, FileFacts& facts) {
    const bool dangling = S_ISLNK(own.stx_mode);
    facts.attributes = dangling ? 0 : ModeBits(own);
    if (isLink) facts.attributes |= attribute::kLink;
    const bool known = S_ISREG(own.stx_mode) || S_ISDIR(own.stx_mode) || isLink;
    if (!known) facts.attributes |= attribute::kDevice;
    facts.size = S_ISDIR(own.stx_mode) ? 0 : own.stx_size;
    facts.accessed = TimeOf(own.stx_atime);
    facts.written = TimeOf(own.stx_mtime);
    if ((own.stx_mask & STATX_BTIME) != 0) facts.created = TimeOf(own.stx_btime);
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
  std::shared_ptr<const MountTable> table_;
  // Set only if network mounts exist: the folder's path without symbolic links, and the names of
  // the network mount points directly in it.
  std::string path_;
  std::vector<std::string> networkMounts_;
  NameList names_;
};

}  // namespace

std::unique_ptr<FolderView> ReadFolder(const std::string& path,
                                       std::shared_ptr<const MountTable> table,
                                       const std::function<bool()>& stop) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return nullptr;
  auto folder = std::make_unique<SystemFolder>(descriptor, std::move(table));
  if (!folder->ReadNames(stop)) return nullptr;
  return folder;
}

std::unique_ptr<FolderView> OpenFolder(const std::string& path,
                                       std::shared_ptr<const MountTable> table) {
  // A folder without read permission may still allow access to its entries.
  int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) descriptor = open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  return std::make_unique<SystemFolder>(descriptor, std::move(table));
}

}  // namespace Sorvik::platform
