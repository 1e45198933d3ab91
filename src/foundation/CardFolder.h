// SPDX-License-Identifier: MIT
// One folder of a card: which names exist in it, in which spelling, and of which kind. The folder
// is listed at the first question that needs a listing, at most once within a call scope, whichever
// provider asks. Paths and names are UTF-8. Never changes once listed. Any thread.
//
// Where a question can be answered in two ways, the caller chooses:
//   Lookup::kListing  for several questions about a folder: answers from one listing of it;
//   Lookup::kDisk     for a single question, such as in a folder that may be large and no card:
//                     asks the file system for that name alone.
// Both give the same answer. Names are compared as the file system does: a name that is listed in
// another spelling only is looked up on the disk, because the file system may ignore case.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/platform/FileSystem.h"

namespace Sorvik::foundation {

enum class Lookup { kDisk, kListing };

class CardFolder {
 public:
  // The folder at `path`, shared with the call scope. Reads nothing yet.
  static std::shared_ptr<const CardFolder> Of(std::string_view path);

  explicit CardFolder(std::string_view path);
  CardFolder(const CardFolder&) = delete;
  CardFolder& operator=(const CardFolder&) = delete;

  // Without a trailing separator.
  const std::string& Path() const noexcept { return path_; }
  std::string PathOf(std::string_view name) const;

  // False if the folder can't be listed.
  bool IsReadable() const { return Listed().items != nullptr; }

  // The kind of `name` after links; nullopt if it doesn't exist, can't be accessed, or isn't a
  // plain name (empty, or with a separator or NUL).
  std::optional<platform::FileKind> KindOf(std::string_view name,
                                           Lookup lookup = Lookup::kListing) const;
  // True for a regular file or a folder. Other kinds are never opened and never reported.
  bool Contains(std::string_view name, Lookup lookup = Lookup::kListing) const;
  bool ContainsFolder(std::string_view name, Lookup lookup = Lookup::kListing) const;
  // The first of `names` that exists; empty if none does.
  std::string_view FirstOf(std::span<const std::string_view> names) const;

  // `name` if it exists, else the first listed name of a file or folder that equals it ignoring
  // case; nullopt if there is neither.
  std::optional<std::string> Find(std::string_view name) const;

  // The names of regular files, or of folders, in order of 16-bit code units; hidden ones included.
  // With an `extension` (its dot included) only the files that have it, ignoring case. Empty if the
  // folder can't be listed.
  std::vector<std::string> Files(std::string_view extension = {}) const;
  std::vector<std::string> Folders() const;
  // The same without hidden names.
  std::vector<std::string> VisibleFiles(std::string_view extension = {}) const;
  std::vector<std::string> VisibleFolders() const;
  // Both in one list.
  std::vector<std::string> VisibleNames() const;
  // The first of the visible files for which `matches` returns true; nullopt if there is none.
  // Stops there, so that a folder of many frames costs no copies of their names.
  std::optional<std::string> FindVisibleFile(
      const std::function<bool(const std::string& name)>& matches) const;
  // True if the listing has a regular file of this name that is no symbolic link.
  bool ListsFile(std::string_view name) const;
  // The number of files and folders that aren't hidden.
  std::size_t VisibleCount() const;

 private:
  // An item by the hash of its folded name, so that a folder of many frames costs no copies of
  // their names.
  struct HashedItem {
    std::size_t hash;
    std::size_t item;
  };
  struct Listing {
    std::shared_ptr<const std::vector<platform::FolderItem>> items;  // null if it can't be listed
  };

  const Listing& Listed() const;
  const std::vector<HashedItem>& ByFoldedName() const;
  std::vector<std::string> Names(platform::FileKind kind, std::string_view extension,
                                 bool withHidden) const;

  std::string path_;
  mutable std::once_flag listedOnce_;
  mutable std::once_flag hashedOnce_;
  mutable Listing listing_;
  mutable std::vector<HashedItem> byFoldedName_;
};

// Whether a regular file or a folder exists at `path`.
bool ExistsOnCard(std::string_view path, Lookup lookup);

// Whether anything exists at `path`, special files included, or a folder. Both ask the disk.
bool ExistsOnDisk(std::string_view path);
bool FolderExistsOnDisk(std::string_view path);

// `path` if it exists, else the path in the same folder whose name equals it ignoring case. The
// name of the folder may be in another spelling, too.
std::optional<std::string> FindOnCard(std::string_view path);

// False only if the call scope has listed the folder of `path` already and the name isn't in it.
// Lists nothing; saves an access to the disk for a sidecar that each of many files may have.
bool MayExistOnCard(std::string_view path);

// RegularFile::Open and ReadHead, without a stat before opening if the call scope has listed the
// folder.
std::optional<platform::RegularFile> OpenOnCard(const std::string& path);
std::optional<std::vector<std::byte>> ReadHeadOnCard(const std::string& path, std::size_t maxBytes);

// The files below `folder` at any depth, as paths: those of each folder in order of 16-bit code
// units, then those of its subfolders. Links to folders aren't followed. With an `extension` (its
// dot included) only files that have it, ignoring case.
std::vector<std::string> ListFilesBelow(std::string_view folder, std::string_view extension = {});

}  // namespace Sorvik::foundation
