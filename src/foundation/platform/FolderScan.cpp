// SPDX-License-Identifier: MIT
#include "foundation/platform/FolderScan.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <memory>

namespace Sorvik::platform {
namespace {

constexpr std::size_t kBlockSize = std::size_t{32} << 10;

// Some file systems don't store the type in their folders.
ScannedType TypeOf(int folder, const dirent64& entry) {
  switch (entry.d_type) {
    case DT_DIR:
      return ScannedType::kFolder;
    case DT_LNK:
      return ScannedType::kLink;
    case DT_UNKNOWN:
      break;
    default:
      return ScannedType::kOther;
  }
  struct stat facts;
  if (fstatat(folder, entry.d_name, &facts, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0) {
    return ScannedType::kOther;
  }
  if (S_ISLNK(facts.st_mode)) return ScannedType::kLink;
  return S_ISDIR(facts.st_mode) ? ScannedType::kFolder : ScannedType::kOther;
}

// Returns false to end the scan.
bool VisitBlock(int folder, const char* block, std::size_t size, const NameVisitor& visit) {
  for (std::size_t at = 0; at < size;) {
    const auto* entry = reinterpret_cast<const dirent64*>(block + at);
    at += entry->d_reclen;
    const std::string_view name = entry->d_name;
    if (name == "." || name == "..") continue;
    if (!visit(name, TypeOf(folder, *entry))) return false;
  }
  return true;
}

struct FreeText {
  void operator()(char* text) const noexcept { std::free(text); }
};

}  // namespace

bool ScanFolder(const std::string& path, const NameVisitor& visit) {
  const int folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
  if (folder < 0) return false;
  alignas(dirent64) std::array<char, kBlockSize> block;
  ssize_t size = 0;
  do {
    size = getdents64(folder, block.data(), block.size());
  } while (size > 0 && VisitBlock(folder, block.data(), static_cast<std::size_t>(size), visit));
  close(folder);
  return size >= 0;
}

std::string ResolveLinks(const std::string& path) {
  const std::unique_ptr<char, FreeText> resolved(realpath(path.c_str(), nullptr));
  return resolved == nullptr ? std::string() : std::string(resolved.get());
}

}  // namespace Sorvik::platform
