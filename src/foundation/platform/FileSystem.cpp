// SPDX-License-Identifier: MIT
#include "foundation/platform/FileSystem.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <limits>
#include <memory>
#include <utility>

#include "foundation/platform/NameOrder.h"

namespace Sorvik::platform {
namespace {

FileKind KindOfMode(mode_t mode) noexcept {
  if (S_ISREG(mode)) return FileKind::kRegular;
  if (S_ISDIR(mode)) return FileKind::kDirectory;
  return FileKind::kSpecial;
}

// Calls stat for an item whose type the listing doesn't have, or for the target of a link.
std::optional<FolderItem> StatItem(int folder, const char* name, bool knownLink) {
  struct stat facts;
  bool isLink = knownLink;
  if (!knownLink) {
    if (fstatat(folder, name, &facts, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0) {
      return std::nullopt;
    }
    isLink = S_ISLNK(facts.st_mode);
    if (!isLink) return FolderItem{name, KindOfMode(facts.st_mode), false};
  }
  if (fstatat(folder, name, &facts, AT_NO_AUTOMOUNT) != 0) {
    return FolderItem{name, FileKind::kDangling, true};
  }
  return FolderItem{name, KindOfMode(facts.st_mode), isLink};
}

std::optional<FolderItem> ItemOf(int folder, const dirent& entry) {
  switch (entry.d_type) {
    case DT_REG:
      return FolderItem{entry.d_name, FileKind::kRegular, false};
    case DT_DIR:
      return FolderItem{entry.d_name, FileKind::kDirectory, false};
    case DT_LNK:
      return StatItem(folder, entry.d_name, true);
    case DT_UNKNOWN:
      return StatItem(folder, entry.d_name, false);
    default:
      return FolderItem{entry.d_name, FileKind::kSpecial, false};
  }
}

struct CloseFolder {
  void operator()(DIR* folder) const noexcept { closedir(folder); }
};

}  // namespace

std::optional<std::vector<FolderItem>> ListFolder(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return std::nullopt;
  const std::unique_ptr<DIR, CloseFolder> folder(fdopendir(descriptor));
  if (!folder) {
    close(descriptor);
    return std::nullopt;
  }
  std::vector<FolderItem> items;
  while (const dirent* entry = readdir(folder.get())) {
    const std::string_view name = entry->d_name;
    if (name == "." || name == "..") continue;
    if (auto item = ItemOf(descriptor, *entry)) items.push_back(std::move(*item));
  }
  SortByName(items, NameOrder::kCodeUnits);
  return items;
}

std::optional<FileKind> KindOf(const std::string& path) noexcept {
  struct stat facts;
  if (stat(path.c_str(), &facts) != 0) return std::nullopt;
  return KindOfMode(facts.st_mode);
}

std::optional<std::int64_t> ModificationTime(const std::string& path) noexcept {
  struct stat facts;
  if (stat(path.c_str(), &facts) != 0) return std::nullopt;
  constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
  constexpr auto kMaxSeconds = std::numeric_limits<std::int64_t>::max() / kNanosecondsPerSecond - 1;
  const std::int64_t seconds =
      std::clamp<std::int64_t>(facts.st_mtim.tv_sec, -kMaxSeconds, kMaxSeconds);
  return seconds * kNanosecondsPerSecond + facts.st_mtim.tv_nsec;
}

std::optional<RegularFile> RegularFile::Open(const std::string& path) noexcept {
  // A NUL would truncate the path to that of another file.
  if (path.find('\0') != path.npos) return std::nullopt;
  // Opening a device or FIFO can have side effects, so check the type first, and again after
  // opening, since the file may have been replaced in between.
  struct stat facts;
  if (stat(path.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode)) return std::nullopt;
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (descriptor < 0) return std::nullopt;
  if (fstat(descriptor, &facts) != 0 || !S_ISREG(facts.st_mode)) {
    close(descriptor);
    return std::nullopt;
  }
  return RegularFile(descriptor, static_cast<std::uint64_t>(std::max<off_t>(facts.st_size, 0)));
}

RegularFile::RegularFile(RegularFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), size_(other.size_) {}

RegularFile& RegularFile::operator=(RegularFile&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  std::swap(size_, other.size_);
  return *this;
}

RegularFile::~RegularFile() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::size_t RegularFile::ReadAt(std::uint64_t offset, std::span<std::byte> into) const noexcept {
  std::size_t done = 0;
  while (done < into.size()) {
    const std::uint64_t position = offset + done;
    if (position > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) break;
    const ssize_t got = pread(descriptor_, into.subspan(done).data(), into.size() - done,
                              static_cast<off_t>(position));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

std::optional<std::vector<std::byte>> ReadHead(const std::string& path, std::size_t maxBytes) {
  const auto file = RegularFile::Open(path);
  if (!file) return std::nullopt;
  std::vector<std::byte> bytes(
      static_cast<std::size_t>(std::min<std::uint64_t>(maxBytes, file->Size())));
  bytes.resize(file->ReadAt(0, bytes));
  return bytes;
}

namespace {

// Symbolic links are resolved: the library's resources are next to the file itself.
std::string FindOwnLibrary() {
  Dl_info info;
  if (dladdr(reinterpret_cast<const void*>(&OwnLibraryPath), &info) == 0) return {};
  if (info.dli_fname == nullptr) return {};
  char resolved[PATH_MAX];
  const char* const path = realpath(info.dli_fname, resolved);
  return path == nullptr ? std::string(info.dli_fname) : std::string(path);
}

}  // namespace

const std::string& OwnLibraryPath() {
  static const std::string path = FindOwnLibrary();
  return path;
}

namespace {

// Evaluated when the library is loaded: a relative path is invalid after the host changes its
// working directory.
[[maybe_unused]] const std::string& kOwnLibraryAtLoad = OwnLibraryPath();

}  // namespace

}  // namespace Sorvik::platform
