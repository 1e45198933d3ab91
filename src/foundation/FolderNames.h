// SPDX-License-Identifier: MIT
// Answers whether names stand in a folder from one listing of it, where a provider asks for many.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/platform/FileSystem.h"

namespace Sorvik::foundation {

// The answers are those of platform::KindOf for the folder's path with the name behind it, also on
// file systems that pay no heed to case: a name that isn't listed in this spelling but in another
// is asked of the disk, as is everything in a folder that can't be listed. Never changes once made;
// any thread.
class FolderNames {
 public:
  // The names of `folder` (UTF-8, without a trailing separator), shared with the call scope.
  static std::shared_ptr<const FolderNames> Of(const std::string& folder);

  // What the name leads to, after links; nothing if it leads nowhere. A name with a separator in it
  // stands in no folder.
  std::optional<platform::FileKind> KindOf(const std::string& name) const;
  // Whether it leads to a regular file or a folder: what is neither is never opened nor reported.
  bool Holds(const std::string& name) const {
    const auto kind = KindOf(name);
    return kind == platform::FileKind::kRegular || kind == platform::FileKind::kDirectory;
  }
  bool HoldsFolder(const std::string& name) const {
    return KindOf(name) == platform::FileKind::kDirectory;
  }

  // Whether something may stand at `path` (UTF-8): false where the call scope has listed its
  // folder already and it isn't among the names. Lists nothing; spares a file that is looked for
  // beside each of many a look at the disk.
  static bool MayExist(const std::string& path);

  explicit FolderNames(std::string folder);

 private:
  std::optional<platform::FileKind> AskDisk(const std::string& name) const;

  std::string folder_;
  // An item by the hash of its name regardless of case, so that a folder of many frames costs no
  // copies of their names.
  struct Place {
    std::size_t hash;
    std::size_t item;
  };
  std::shared_ptr<const std::vector<platform::FolderItem>> items_;  // null if it can't be listed
  std::vector<Place> places_;                                       // in order of their hashes
};

}  // namespace Sorvik::foundation
