// SPDX-License-Identifier: MIT
#include "foundation/platform/FileStatus.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace Sorvik::platform {

std::optional<FileStatus> StatusOf(const std::string& path) noexcept {
  struct stat facts {};
  if (stat(path.c_str(), &facts) != 0) return std::nullopt;
  FileStatus status{FileKind::kSpecial, 0, static_cast<std::uint64_t>(facts.st_dev),
                    static_cast<std::uint64_t>(facts.st_ino)};
  if (S_ISREG(facts.st_mode)) {
    status.kind = FileKind::kRegular;
    status.bytes = static_cast<std::uint64_t>(facts.st_size);
  } else if (S_ISDIR(facts.st_mode)) {
    status.kind = FileKind::kDirectory;
  }
  return status;
}

std::string ReadError(const std::string& path) {
  if (access(path.c_str(), R_OK) == 0) return {};
  return std::generic_category().message(errno);
}

}  // namespace Sorvik::platform
