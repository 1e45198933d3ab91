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
#include <system_error>
#include <utility>

#include "foundation/platform/AccessTimes.h"
#include "foundation/platform/Descriptor.h"
#include "foundation/platform/FileStatus.h"
#include "foundation/platform/FolderScan.h"
#include "foundation/platform/NameOrder.h"
#include "foundation/platform/ReadReports.h"
#include "foundation/platform/ShareAccess.h"

namespace Sorvik::platform {
namespace {

FileKind KindOfMode(mode_t mode) noexcept {
  if (S_ISREG(mode)) return FileKind::kRegular;
  if (S_ISDIR(mode)) return FileKind::kDirectory;
  return FileKind::kSpecial;
}

std::optional<FileKind> KindDirectly(const std::string& path) {
  struct stat facts;
  if (stat(path.c_str(), &facts) != 0) return std::nullopt;
  return KindOfMode(facts.st_mode);
}

// The kind of the file that `path` leads to on a share of another operation.
std::optional<FileKind> KindOnShare(ShareAccess& access, const ShareAccess::Place& place,
                                    const std::string& path) {
  if (place.isMountPoint) return FileKind::kDirectory;
  using Kind = std::optional<FileKind>;
  return access.Ask<Kind>(*place.share, [path] { return KindDirectly(path); }).value_or(Kind());
}

enum class Located { kHere, kMissing, kOnOtherShare };

// Reads the facts of the file that `path` leads to, or sets `place` without accessing it if that is
// a share of another operation. One stat if `path` is no symbolic link.
Located Locate(ShareAccess* access, const std::string& path, struct stat& facts,
               ShareAccess::Place& place) {
  using FinalLink = ShareAccess::FinalLink;
  const auto result = [](int status) { return status == 0 ? Located::kHere : Located::kMissing; };
  if (access == nullptr || !access->HasShares()) return result(stat(path.c_str(), &facts));
  place = access->OtherShareAt(path, FinalLink::kKeep);
  if (place.share != nullptr) return Located::kOnOtherShare;
  if (lstat(path.c_str(), &facts) != 0) return Located::kMissing;
  if (!S_ISLNK(facts.st_mode)) return Located::kHere;
  place = access->OtherShareAt(path, FinalLink::kFollow);
  if (place.share != nullptr) return Located::kOnOtherShare;
  return result(stat(path.c_str(), &facts));
}

struct CloseFolder {
  void operator()(DIR* folder) const noexcept { closedir(folder); }
};

// Lists a folder that may be accessed on this thread.
class FolderLister {
 public:
  FolderLister(ShareAccess& access, const std::string& path) : access_(access), path_(path) {}

  std::optional<std::vector<FolderItem>> List() {
    const Descriptor folder(open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
    descriptor_ = folder.Number();
    if (descriptor_ < 0) {
      ReportReadError(path_, errno);
      return std::nullopt;
    }
    std::vector<FolderItem> items;
    const bool complete = ReadEntries(descriptor_, [this, &items](const dirent64& entry) {
      if (auto item = ItemOf(entry)) items.push_back(std::move(*item));
      return true;
    });
    if (!complete) ReportReadError(path_, errno);
    SortByName(items, NameOrder::kCodeUnits);
    if (complete && !mayHaveLinks_) access_.NoteFolderWithoutLinks(path_);
    return items;
  }

 private:
  std::optional<FolderItem> ItemOf(const dirent64& entry) {
    switch (entry.d_type) {
      case DT_REG:
        return FolderItem{entry.d_name, FileKind::kRegular, false};
      case DT_DIR:
        return FolderItem{entry.d_name, FileKind::kDirectory, false};
      case DT_LNK:
        return LinkItem(entry.d_name);
      case DT_UNKNOWN:
        return StatItem(entry.d_name);
      default:
        return FolderItem{entry.d_name, FileKind::kSpecial, false};
    }
  }

  // An item whose type the listing doesn't have.
  std::optional<FolderItem> StatItem(const char* name) {
    mayHaveLinks_ = true;
    const auto place = PlaceOf(name, ShareAccess::FinalLink::kKeep);
    if (place.share != nullptr) return FolderItem{name, FileKind::kDirectory, false};
    struct stat facts;
    if (fstatat(descriptor_, name, &facts, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0) {
      return std::nullopt;
    }
    if (S_ISLNK(facts.st_mode)) return LinkItem(name);
    return FolderItem{name, KindOfMode(facts.st_mode), false};
  }

  FolderItem LinkItem(const char* name) {
    mayHaveLinks_ = true;
    const auto place = PlaceOf(name, ShareAccess::FinalLink::kFollow);
    if (place.share != nullptr) {
      const auto kind = KindOnShare(access_, place, PathOf(name));
      return {name, kind.value_or(FileKind::kDangling), true};
    }
    struct stat facts;
    const bool exists = fstatat(descriptor_, name, &facts, AT_NO_AUTOMOUNT) == 0;
    return {name, exists ? KindOfMode(facts.st_mode) : FileKind::kDangling, true};
  }

  ShareAccess::Place PlaceOf(const char* name, ShareAccess::FinalLink final) {
    return access_.HasShares() ? access_.OtherShareAt(PathOf(name), final) : ShareAccess::Place();
  }

  std::string PathOf(const char* name) const { return path_ + kSeparator + name; }

  ShareAccess& access_;
  const std::string& path_;
  int descriptor_ = -1;
  bool mayHaveLinks_ = false;
};

}  // namespace

std::optional<std::vector<FolderItem>> ListFolder(const std::string& path) {
  const AccessTimer timer;
  const auto access = ShareAccess::CurrentOr(path);
  const auto place = access->OtherShareAt(path);
  if (place.share == nullptr) return FolderLister(*access, path).List();
  using Items = std::optional<std::vector<FolderItem>>;
  const auto thread = access->AnsweringThread(*place.share);
  if (!thread) return std::nullopt;
  return thread->Ask<Items>([path] { return ListFolder(path); }, ShareAccess::kTransferTimeout)
      .value_or(Items());
}

std::optional<FileKind> KindOf(const std::string& path) {
  const AccessTimer timer;
  const auto access = ShareAccess::Current();
  struct stat facts;
  ShareAccess::Place place;
  switch (Locate(access.get(), path, facts, place)) {
    case Located::kHere:
      return KindOfMode(facts.st_mode);
    case Located::kOnOtherShare:
      return KindOnShare(*access, place, path);
    case Located::kMissing:
      break;
  }
  return std::nullopt;
}

namespace {

std::optional<std::int64_t> ModificationTimeOf(const struct stat& facts) {
  constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
  constexpr auto kMaxSeconds = std::numeric_limits<std::int64_t>::max() / kNanosecondsPerSecond - 1;
  const std::int64_t seconds =
      std::clamp<std::int64_t>(facts.st_mtim.tv_sec, -kMaxSeconds, kMaxSeconds);
  return seconds * kNanosecondsPerSecond + facts.st_mtim.tv_nsec;
}

std::optional<FileStatus> MakeStatus(const struct stat& facts) {
  const FileKind kind = KindOfMode(facts.st_mode);
  const auto bytes = kind == FileKind::kRegular ? static_cast<std::uint64_t>(facts.st_size) : 0;
  return FileStatus{kind, bytes, ModificationTimeOf(facts).value_or(0),
                    static_cast<std::uint64_t>(facts.st_dev),
                    static_cast<std::uint64_t>(facts.st_ino)};
}

Access AccessOfError(int error) {
  static constexpr int kPermanent[] = {ENOENT, ENOTDIR, EACCES, EPERM,        ELOOP,
                                       EISDIR, ENODEV,  ENXIO,  ENAMETOOLONG, EINVAL};
  return std::ranges::count(kPermanent, error) > 0 ? Access::kUnreadable : Access::kTransientError;
}

Access AccessOfFolder(int descriptor) {
  const std::unique_ptr<DIR, CloseFolder> folder(fdopendir(descriptor));
  if (!folder) {
    close(descriptor);
    return Access::kTransientError;
  }
  errno = 0;
  const bool hasName = readdir(folder.get()) != nullptr;
  return hasName || errno == 0 ? Access::kReadable : AccessOfError(errno);
}

// Opens nothing but regular files and folders.
Access AccessDirectly(const std::string& path) {
  struct stat facts;
  if (stat(path.c_str(), &facts) != 0) return AccessOfError(errno);
  if (!S_ISREG(facts.st_mode) && !S_ISDIR(facts.st_mode)) return Access::kUnreadable;
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (descriptor < 0) return AccessOfError(errno);
  if (S_ISDIR(facts.st_mode)) return AccessOfFolder(descriptor);
  char byte = 0;
  const Access access =
      pread(descriptor, &byte, 1, 0) < 0 ? AccessOfError(errno) : Access::kReadable;
  close(descriptor);
  return access;
}

std::string ReadErrorDirectly(const std::string& path) {
  if (access(path.c_str(), R_OK) == 0) return {};
  return std::generic_category().message(errno);
}

// Returns what `read` gives for the file that `path` leads to; nullopt if it doesn't exist or is on
// a share that doesn't answer.
template <class Fact>
std::optional<Fact> FactOf(const std::string& path,
                           std::optional<Fact> (*read)(const struct stat& facts)) {
  const auto access = ShareAccess::Current();
  struct stat facts;
  ShareAccess::Place place;
  const Located located = Locate(access.get(), path, facts, place);
  if (located == Located::kMissing) return std::nullopt;
  if (located == Located::kHere) return read(facts);
  const auto ask = [path, read]() -> std::optional<Fact> {
    struct stat target;
    return stat(path.c_str(), &target) == 0 ? read(target) : std::nullopt;
  };
  return access->Ask<std::optional<Fact>>(*place.share, ask).value_or(std::optional<Fact>());
}

}  // namespace

std::optional<std::int64_t> ModificationTime(const std::string& path) {
  return FactOf<std::int64_t>(path, ModificationTimeOf);
}

std::optional<FileStatus> StatusOf(const std::string& path) {
  return FactOf<FileStatus>(path, MakeStatus);
}

Access AccessOf(const std::string& path) {
  const auto access = ShareAccess::Current();
  const auto place =
      access && access->HasShares() ? access->OtherShareAt(path) : ShareAccess::Place();
  if (place.share == nullptr) return AccessDirectly(path);
  return access->Ask<Access>(*place.share, [path] { return AccessDirectly(path); })
      .value_or(Access::kTransientError);
}

std::string ReadError(const std::string& path) {
  const auto access = ShareAccess::Current();
  const auto place =
      access && access->HasShares() ? access->OtherShareAt(path) : ShareAccess::Place();
  if (place.share == nullptr) return ReadErrorDirectly(path);
  return access->Ask<std::string>(*place.share, [path] { return ReadErrorDirectly(path); })
      .value_or("the network share doesn't answer");
}

bool IsOnUnresponsiveShare(const std::string& path) {
  const auto access = ShareAccess::Current();
  if (!access || !access->HasShares()) return false;
  const auto place = access->OtherShareAt(path);
  return place.share != nullptr && access->IsUnresponsive(*place.share);
}

// A file of which every access, closing included, is a call on the thread of its share.
class RegularFile::OnShare {
 public:
  OnShare(std::shared_ptr<ShareThread> thread, RegularFile file)
      : thread_(std::move(thread)), file_(std::make_shared<RegularFile>(std::move(file))) {}
  ~OnShare() {
    thread_->Later([file = std::move(file_)]() mutable { file = nullptr; });
  }
  OnShare(const OnShare&) = delete;
  OnShare& operator=(const OnShare&) = delete;

  std::size_t ReadAt(std::uint64_t offset, std::span<std::byte> buffer) const {
    using Bytes = std::vector<std::byte>;
    const auto read = [file = file_, offset, size = buffer.size()] {
      Bytes bytes(static_cast<std::size_t>(std::min<std::uint64_t>(size, file->Size())));
      bytes.resize(file->ReadAt(offset, bytes));
      return bytes;
    };
    const auto bytes = thread_->Ask<Bytes>(read, ShareAccess::kTransferTimeout);
    if (!bytes) return 0;
    std::ranges::copy(*bytes, buffer.begin());
    return bytes->size();
  }

 private:
  std::shared_ptr<ShareThread> thread_;
  std::shared_ptr<RegularFile> file_;
};

std::optional<RegularFile> RegularFile::Open(const std::string& path) {
  // A NUL would truncate the path to that of another file.
  if (path.find('\0') != path.npos) return std::nullopt;
  const AccessTimer timer;
  const auto access = ShareAccess::Current();
  // Opening a device or FIFO can have side effects, so check the type first, and again after
  // opening, since the file may have been replaced in between.
  struct stat facts;
  ShareAccess::Place place;
  const Located located = Locate(access.get(), path, facts, place);
  if (located == Located::kMissing) return std::nullopt;
  if (located == Located::kHere) {
    return S_ISREG(facts.st_mode) ? OpenDirectly(path) : std::nullopt;
  }
  const auto thread = access->AnsweringThread(*place.share);
  if (!thread) return std::nullopt;
  const auto open = [path]() -> std::shared_ptr<RegularFile> {
    if (KindDirectly(path) != FileKind::kRegular) return nullptr;
    auto file = OpenDirectly(path);
    return file ? std::make_shared<RegularFile>(std::move(*file)) : nullptr;
  };
  const auto opened =
      thread->Ask<std::shared_ptr<RegularFile>>(open, ShareAccess::kTransferTimeout);
  if (!opened || !*opened) return std::nullopt;
  RegularFile file(-1, (*opened)->Size());
  file.onShare_ = std::make_unique<OnShare>(thread, std::move(**opened));
  return file;
}

std::optional<RegularFile> RegularFile::OpenListed(const std::string& path) {
  if (path.find('\0') != path.npos) return std::nullopt;
  const auto access = ShareAccess::Current();
  if (access && access->HasShares() &&
      access->OtherShareAt(path, ShareAccess::FinalLink::kKeep).share != nullptr) {
    return Open(path);
  }
  const AccessTimer timer;
  // The file may have been replaced by a link since.
  return OpenDirectly(path, O_NOFOLLOW);
}

std::optional<RegularFile> RegularFile::OpenDirectly(const std::string& path, int extraFlags) {
  const int descriptor =
      open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | extraFlags);
  if (descriptor < 0) {
    ReportReadError(path, errno);
    return std::nullopt;
  }
  struct stat facts;
  if (fstat(descriptor, &facts) != 0 || !S_ISREG(facts.st_mode)) {
    close(descriptor);
    return std::nullopt;
  }
  return RegularFile(descriptor, static_cast<std::uint64_t>(std::max<off_t>(facts.st_size, 0)));
}

RegularFile::RegularFile(int descriptor, std::uint64_t size) noexcept
    : descriptor_(descriptor), size_(size) {}

RegularFile::RegularFile(RegularFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)),
      size_(other.size_),
      onShare_(std::move(other.onShare_)) {}

RegularFile& RegularFile::operator=(RegularFile&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  std::swap(size_, other.size_);
  std::swap(onShare_, other.onShare_);
  return *this;
}

RegularFile::~RegularFile() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::size_t RegularFile::ReadAt(std::uint64_t offset, std::span<std::byte> into) const {
  const AccessTimer timer;
  if (onShare_) return onShare_->ReadAt(offset, into);
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

std::vector<std::byte> RegularFile::ReadPart(std::uint64_t offset, std::size_t maxBytes) const {
  if (offset >= size_) return {};
  std::vector<std::byte> bytes(
      static_cast<std::size_t>(std::min<std::uint64_t>(maxBytes, size_ - offset)));
  bytes.resize(ReadAt(offset, bytes));
  return bytes;
}

std::optional<std::vector<std::byte>> ReadHead(const std::string& path, std::size_t maxBytes) {
  const auto file = RegularFile::Open(path);
  if (!file) return std::nullopt;
  return file->ReadHead(maxBytes);
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
  // Never destroyed: workers may still use it while the process exits.
  static const std::string& path = *new std::string(FindOwnLibrary());
  return path;
}

namespace {

// Evaluated when the library is loaded: a relative path is invalid after the host changes its
// working directory.
[[maybe_unused]] const std::string& kOwnLibraryAtLoad = OwnLibraryPath();

}  // namespace

}  // namespace Sorvik::platform
