// SPDX-License-Identifier: MIT
#include "foundation/platform/FolderScan.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cstdlib>
#include <memory>

#include "foundation/platform/Descriptor.h"

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

// Returns false to end the reading.
bool VisitBlock(const char* block, std::size_t size, const EntryVisitor& visit) {
  for (std::size_t at = 0; at < size;) {
    const auto* entry = reinterpret_cast<const dirent64*>(block + at);
    at += entry->d_reclen;
    const std::string_view name = entry->d_name;
    if (name != "." && name != ".." && !visit(*entry)) return false;
  }
  return true;
}

struct FreeText {
  void operator()(char* text) const noexcept { std::free(text); }
};

}  // namespace

bool ReadEntries(int folder, const EntryVisitor& visit) {
  alignas(dirent64) std::array<char, kBlockSize> block;
  ssize_t size = 0;
  do {
    size = getdents64(folder, block.data(), block.size());
  } while (size > 0 && VisitBlock(block.data(), static_cast<std::size_t>(size), visit));
  return size >= 0;
}

bool ScanFolder(const std::string& path, const NameVisitor& visit) {
  const Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
  if (folder.Number() < 0) return false;
  return ReadEntries(folder.Number(), [&folder, &visit](const dirent64& entry) {
    return visit(entry.d_name, TypeOf(folder.Number(), entry));
  });
}

std::string ResolveLinks(const std::string& path) {
  const std::unique_ptr<char, FreeText> resolved(realpath(path.c_str(), nullptr));
  return resolved == nullptr ? std::string() : std::string(resolved.get());
}

}  // namespace Sorvik::platform
