// SPDX-License-Identifier: MIT
// Folders and files on disk. Paths are bytes. Any thread.
//
// Within a ShareScope (ShareAccess.h) these functions never block on a network share that the
// operation wasn't asked for: files on a share that doesn't answer are missing, except that a mount
// point is a folder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Sorvik::platform {

inline constexpr char kSeparator = '/';
// Size of the longest path that the system accepts, including its NUL.
inline constexpr std::size_t kPathLimit = 4096;

enum class FileKind {
  kRegular,
  kDirectory,
  kSpecial,   // a device, FIFO or socket
  kDangling,  // a symbolic link whose target is missing
};

struct FolderItem {
  std::string name;
  FileKind kind;  // of the target if the item is a symbolic link
  bool isLink;
};

// Returns the items of a folder in order of the UTF-16 code units of their names, without "." and
// "..". Returns nullopt if it can't be opened as a folder; items that can't be read are omitted.
// Calls stat only for symbolic links and on file systems whose listings have no types.
std::optional<std::vector<FolderItem>> ListFolder(const std::string& path);

// Returns the kind of the file at `path`, following symbolic links; nullopt if it is missing or
// can't be accessed.
std::optional<FileKind> KindOf(const std::string& path);

// Returns the modification time in nanoseconds since 1970; nullopt if it can't be read.
std::optional<std::int64_t> ModificationTime(const std::string& path);

// True if `path` leads to a share other than the operation's own that hasn't answered in this
// operation. Accesses nothing on the share.
bool IsOnUnresponsiveShare(const std::string& path);

// A regular file open for reading. FIFOs, sockets, devices and folders are never opened. Movable;
// one object must not be used by two threads at a time.
class RegularFile {
 public:
  // Returns nullopt if `path` is no regular file or can't be opened. Never blocks on a FIFO.
  static std::optional<RegularFile> Open(const std::string& path);
  // The same without a stat before opening, for a path that is a regular file in a listing of its
  // folder.
  static std::optional<RegularFile> OpenListed(const std::string& path);
  RegularFile(RegularFile&& other) noexcept;
  RegularFile& operator=(RegularFile&& other) noexcept;
  RegularFile(const RegularFile&) = delete;
  RegularFile& operator=(const RegularFile&) = delete;
  ~RegularFile();

  // The size when the file was opened. The file may be shorter by now.
  std::uint64_t Size() const noexcept { return size_; }
  // Reads up to `into.size()` bytes at `offset` and returns their number; fewer at the end of the
  // file, after a read error, or if the file is on a share of another operation that doesn't
  // answer.
  std::size_t ReadAt(std::uint64_t offset, std::span<std::byte> into) const;
  // Reads up to `maxBytes` from `offset`, or from the start.
  std::vector<std::byte> ReadPart(std::uint64_t offset, std::size_t maxBytes) const;
  std::vector<std::byte> ReadHead(std::size_t maxBytes) const { return ReadPart(0, maxBytes); }

 private:
  class OnShare;

  RegularFile(int descriptor, std::uint64_t size) noexcept;
  static std::optional<RegularFile> OpenDirectly(const std::string& path, int extraFlags = 0);

  int descriptor_;  // -1 if onShare_ is set
  std::uint64_t size_;
  std::unique_ptr<OnShare> onShare_;  // set if the file must not be accessed on this thread
};

// Reads up to `maxBytes` from the start of a regular file. Returns nullopt if it can't be opened.
std::optional<std::vector<std::byte>> ReadHead(const std::string& path, std::size_t maxBytes);

// The path of this library's file with symbolic links resolved; empty if it is unknown.
const std::string& OwnLibraryPath();

}  // namespace Sorvik::platform
