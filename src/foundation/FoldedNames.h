// SPDX-License-Identifier: MIT
// The names in a folder by their folded form, for structures whose cameras and readers disagree
// about case. Any thread.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Sorvik::foundation {

using Hestra::UTF16String;

class FoldedNames {
 public:
  // Those of `folder` (UTF-8, without a trailing separator), made once within a call scope. Holds
  // regular files and folders; no names if the folder can't be read.
  static std::shared_ptr<const FoldedNames> Of(const std::string& folder);

  // How many of the names aren't hidden.
  std::size_t VisibleCount() const noexcept { return visible_; }
  // The name as it is on disk; null if there is none that folds to the same.
  const UTF16String* Find(std::u16string_view name) const;

 private:
  std::unordered_map<UTF16String, UTF16String> names_;
  std::size_t visible_ = 0;
};

// `path` if that is there, else the path in the same folder whose name folds to the same; nothing
// if there is neither. Folders are listed once within a call scope.
std::optional<UTF16String> FoundOnDisk(const UTF16String& path);

}  // namespace Sorvik::foundation
