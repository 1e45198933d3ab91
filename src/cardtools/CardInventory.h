// SPDX-License-Identifier: MIT
// All regular files below the root of a card, with their sizes. Paths are UTF-8. Made on one
// thread; never changes afterwards.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/platform/FileStatus.h"

namespace Sorvik {

struct InventoryFile {
  std::string path;
  std::uint64_t bytes = 0;
  bool hidden = false;        // written by desktops and file servers
  std::int64_t modified = 0;  // nanoseconds since 1970
};

// Whether a file or folder of this name is left on media by desktops or file systems.
bool IsSystemName(std::string_view name);

class CardListing {
 public:
  // Whether a folder, which isn't a link, is to be listed.
  using Filter = std::function<bool(const std::string& folder)>;

  // Lists all folders below `root` that `isListed` accepts, without following links to folders.
  // With `folders` (patterns of a CardLayout) only those whose first component matches, besides the
  // files in `root` itself.
  CardListing(const std::string& root, const Filter& isListed,
              const std::vector<std::string_view>* folders = nullptr);

  const std::string& Root() const noexcept { return root_; }
  // By path, in order of 16-bit code units within each folder.
  const std::vector<InventoryFile>& Files() const noexcept { return files_; }
  // Whether a file at `path` would be in Files().
  bool Covers(std::string_view path) const;
  const std::vector<std::string>& UnreadableFolders() const noexcept { return unreadableFolders_; }
  // Names that are neither files nor folders: links without a target, FIFOs, devices.
  const std::vector<std::string>& OtherNames() const noexcept { return otherNames_; }

 private:
  void AddFolder(const std::string& folder, bool hidden, std::size_t depth, const Filter& isListed);
  bool EntersFolder(std::string_view name) const;

  std::string root_;
  const std::vector<std::string_view>* folders_;
  std::vector<InventoryFile> files_;
  std::vector<std::string> unreadableFolders_;
  std::vector<std::string> otherNames_;
};

// A listing in which files are found by their paths.
class CardInventory : public CardListing {
 public:
  CardInventory(const std::string& root, const Filter& isListed,
                const std::vector<std::string_view>* folders = nullptr);

  // The index in Files() of the file at `path`. A path in another spelling is found if the file
  // system says that it is the same file. nullopt if there is none below the root.
  std::optional<std::size_t> Find(std::string_view path) const;
  // The index of another spelling of the same file, whose path equals it ignoring case.
  std::optional<std::size_t> OtherSpelling(std::size_t index) const;

 private:
  std::unordered_map<std::string, std::size_t> byPath_;
  std::unordered_multimap<std::string, std::size_t> byFoldedPath_;
};

}  // namespace Sorvik
