// SPDX-License-Identifier: MIT
// Folders and files of the running system. Paths are bytes. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Sorvik::platform {

inline constexpr char kSeparator = '/';
// Longest path that the system takes, its NUL included.
inline constexpr std::size_t kPathLimit = 4096;

enum class FileKind {
  kRegular,
  kDirectory,
  kSpecial,   // a device, FIFO or socket
  kDangling,  // a link whose target isn't there
};

struct FolderItem {
  std::string name;
  FileKind kind;  // of the target, where the item is a link
  bool isLink;
};

// The items of a folder in order of the 16-bit code units of their names, without "." and "..".
// Nothing if it can't be opened as a folder. An unreadable rest is left out. Costs no stat but for
// links and on file systems that don't tell kinds in their listings.
std::optional<std::vector<FolderItem>> ListFolder(const std::string& path);

// What `path` leads to, after links; nothing if it leads nowhere or may not be looked at.
std::optional<FileKind> KindOf(const std::string& path) noexcept;

// Time of the last change of the contents in nanoseconds since 1970; nothing if it can't be had.
std::optional<std::int64_t> ModificationTime(const std::string& path) noexcept;

// A regular file open for reading. Nothing else is ever opened: a FIFO, socket, device or folder in
// its place is refused without waiting. Moves; one object belongs to one thread at a time.
class RegularFile {
 public:
  static std::optional<RegularFile> Open(const std::string& path) noexcept;
  RegularFile(RegularFile&& other) noexcept;
  RegularFile& operator=(RegularFile&& other) noexcept;
  RegularFile(const RegularFile&) = delete;
  RegularFile& operator=(const RegularFile&) = delete;
  ~RegularFile();

  // The size when the file was opened. Reads may find less.
  std::uint64_t Size() const noexcept { return size_; }
  // Fills `into` from `offset` and returns how many bytes were there; fewer at the end of the file
  // or when reading fails.
  std::size_t ReadAt(std::uint64_t offset, std::span<std::byte> into) const noexcept;

 private:
  RegularFile(int descriptor, std::uint64_t size) noexcept : descriptor_(descriptor), size_(size) {}

  int descriptor_;
  std::uint64_t size_;
};

// The first `most` bytes of a regular file; nothing if it can't be opened.
std::optional<std::vector<std::byte>> ReadHead(const std::string& path, std::size_t most);

// The file that holds this library's code, after links; empty if it can't be told.
const std::string& OwnLibraryPath();

}  // namespace Sorvik::platform
