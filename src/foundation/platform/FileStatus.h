// SPDX-License-Identifier: MIT
// Size and identity of a file, without opening it. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/platform/FileSystem.h"

namespace Sorvik::platform {

struct FileStatus {
  FileKind kind;
  std::uint64_t bytes;    // of a regular file
  std::int64_t modified;  // nanoseconds since 1970
  // Together they identify the file, whatever its path.
  std::uint64_t device;
  std::uint64_t inode;

  bool IsSameFile(const FileStatus& other) const noexcept {
    return device == other.device && inode == other.inode;
  }
};

// After links; nullopt if the path doesn't exist, can't be accessed, or is on a share that doesn't
// answer (ShareAccess.h).
std::optional<FileStatus> StatusOf(const std::string& path);

enum class Access {
  kReadable,
  kUnreadable,      // it is missing, or access is denied
  kTransientError,  // an I/O error, or a share that doesn't answer: worth trying again
};
// Reads the first name of a folder, or the first byte of a regular file.
Access AccessOf(const std::string& path);

// Why the regular file or folder at `path` can't be read, in the system's words; empty if it can.
std::string ReadError(const std::string& path);

}  // namespace Sorvik::platform
