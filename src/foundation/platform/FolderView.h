// SPDX-License-Identifier: MIT
// A folder with the facts that its file system has about what lies in it. One small interface, so
// that facts which this machine's file systems don't have can be put in its place.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Sorvik::platform {

// Attribute bits, with the values that FAT and NTFS store.
namespace attribute {

inline constexpr std::uint32_t kReadOnly = 0x1;
inline constexpr std::uint32_t kHidden = 0x2;
inline constexpr std::uint32_t kSystem = 0x4;
inline constexpr std::uint32_t kDirectory = 0x10;
inline constexpr std::uint32_t kArchive = 0x20;
inline constexpr std::uint32_t kDevice = 0x40;  // a device, FIFO or socket
inline constexpr std::uint32_t kNormal = 0x80;  // a plain file without any other bit
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

// Size and times of a link are those of what it leads to, where that is there.
struct FileFacts {
  std::uint32_t attributes = 0;
  std::uint64_t size = 0;  // 0 for folders
  std::optional<FileTime> created;
  std::optional<FileTime> accessed;
  std::optional<FileTime> written;
  std::string shortName;  // the 8.3 name beside a long one, where the file system keeps it
};

enum class FactsState {
  kKnown,
  kRefused,  // it is there, and that is all that may be known
  kGone,
};

// What a listing tells of an item without a look at it.
enum class ItemType { kUnknown, kRegular, kDirectory, kLink, kDevice };

struct FolderName {
  std::string_view name;  // with a NUL behind it
  ItemType type;
};

// Belongs to one thread. Names are borrowed from the view.
class FolderView {
 public:
  virtual ~FolderView() = default;

  // Ordered by bytes, without "." and "..".
  virtual const std::vector<FolderName>& Names() const = 0;
  // The facts of an item, whose name needn't be one of Names().
  virtual FactsState Look(const FolderName& item, bool withShortName, FileFacts& facts) const = 0;
  // True where the file system stores attributes, so that a name doesn't tell what is hidden.
  virtual bool StoresAttributes() const = 0;
  // False for an item that lies on another place's network mount and isn't to be touched.
  virtual bool MayTouch(const FolderName& item) const = 0;
};

// The folder with its names; null if it can't be read to its end, or if `stop`, which is asked from
// time to time, says true. A mount of a network file system among its items is described from the
// mount table and never touched; no look mounts anything or forces a file system to catch up.
std::unique_ptr<FolderView> ReadFolder(const std::string& path, const std::function<bool()>& stop);

// The folder for looks at single items, without names; null if it can't be opened.
std::unique_ptr<FolderView> OpenFolder(const std::string& path);

}  // namespace Sorvik::platform
