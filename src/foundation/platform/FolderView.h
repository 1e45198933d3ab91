// SPDX-License-Identifier: MIT
// A folder and the facts that its file system has about the items in it. An interface, so that
// tests can supply attributes that this machine's file systems don't have.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/platform/MountTable.h"

namespace Sorvik::platform {

// Attribute bits, with the values that FAT and NTFS store.
namespace attribute {

inline constexpr std::uint32_t kReadOnly = 0x1;
inline constexpr std::uint32_t kHidden = 0x2;
inline constexpr std::uint32_t kSystem = 0x4;
inline constexpr std::uint32_t kDirectory = 0x10;
inline constexpr std::uint32_t kArchive = 0x20;
inline constexpr std::uint32_t kDevice = 0x40;  // a device, FIFO or socket
inline constexpr std::uint32_t kNormal = 0x80;  // a regular file without any other bit
inline constexpr std::uint32_t kTemporary = 0x100;
inline constexpr std::uint32_t kSparse = 0x200;
inline constexpr std::uint32_t kLink = 0x400;
inline constexpr std::uint32_t kCompressed = 0x800;
inline constexpr std::uint32_t kOffline = 0x1000;
inline constexpr std::uint32_t kNotIndexed = 0x2000;
inline constexpr std::uint32_t kEncrypted = 0x4000;

}  // namespace attribute

struct FileTime {
  std::int64_t seconds = 0;  // since 1970, UTC
  std::uint32_t nanoseconds = 0;
};

// Size and times of a symbolic link are those of its target; its own if it is dangling.
struct FileFacts {
  std::uint32_t attributes = 0;
  std::optional<std::uint64_t> size = 0;  // 0 for folders; nullopt if it is unknown
  std::optional<FileTime> created;
  std::optional<FileTime> accessed;
  std::optional<FileTime> written;
  std::string shortName;  // the 8.3 name of an item with a long name; empty if none is stored
};

enum class FactsState {
  kKnown,
  kRefused,       // the item exists, but its facts can't be read
  kUnresponsive,  // only some facts are known: the others are on a share that doesn't answer
  kMissing,
};

// The type as the folder's listing gives it, without a stat.
enum class ItemType { kUnknown, kRegular, kDirectory, kLink, kDevice };

struct FolderName {
  std::string_view name;  // NUL-terminated
  ItemType type;
};

// Not thread-safe. Names are valid while the view exists.
class FolderView {
 public:
  virtual ~FolderView() = default;

  // Ordered by bytes, without "." and "..".
  virtual const std::vector<FolderName>& Names() const = 0;
  // Reads the facts of an item, whose name needn't be one of Names().
  virtual FactsState ReadFacts(const FolderName& item, bool withShortName,
                               FileFacts& facts) const = 0;
  // True if the file system stores attributes: hidden then is an attribute, not only a leading dot.
  virtual bool StoresAttributes() const = 0;
};

// Opens the folder and reads its names. Returns nullptr if it can't be read to its end, or if
// `stop`, which is polled between blocks, returns true. Mount points of shares and links to shares
// are accessed as described in ShareAccess.h; reading facts triggers no automount and no sync.
// Returns nullptr for a folder on a share of another operation.
std::unique_ptr<FolderView> ReadFolder(const std::string& path, const std::function<bool()>& stop);

// Opens the folder without reading its names, for ReadFacts of single items. Returns nullptr if it
// can't be opened.
std::unique_ptr<FolderView> OpenFolder(const std::string& path);

}  // namespace Sorvik::platform
