// SPDX-License-Identifier: MIT
#include "foundation/FoldedNames.h"

#include "foundation/CallScope.h"
#include "foundation/Presence.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"

namespace Sorvik::foundation {

namespace PathUtils = Hestra::PathUtils;
using tarnwick::utility::FoldCase;

std::shared_ptr<const FoldedNames> FoldedNames::Of(const std::string& folder) {
  return CallScope::Remember<FoldedNames>(folder, [&folder] {
    FoldedNames names;
    const auto items = Hestra::Directory::GetItems(folder);
    if (!items) return names;
    for (const platform::FolderItem& item : *items) {
      if (item.kind != platform::FileKind::kRegular &&
          item.kind != platform::FileKind::kDirectory) {
        continue;
      }
      if (!item.name.starts_with('.')) ++names.visible_;
      UTF16String name = Hestra::MakeString(item.name);
      names.names_.emplace(FoldCase(name), std::move(name));
    }
    return names;
  });
}

const UTF16String* FoldedNames::Find(std::u16string_view name) const {
  const auto found = names_.find(FoldCase(name));
  return found == names_.end() ? nullptr : &found->second;
}

std::optional<UTF16String> FoundOnDisk(const UTF16String& path) {
  if (IsPresent(path, Lookup::kListing)) return path;
  const UTF16String folder = PathUtils::RemoveTrailingSlash(PathUtils::GetFullDirectoryPart(path));
  if (folder.empty()) return std::nullopt;
  const auto names = FoldedNames::Of(Hestra::MakeStdString(folder));
  const UTF16String* name = names->Find(PathUtils::GetFullFilePart(path));
  return name == nullptr ? std::nullopt : std::optional(PathUtils::CombinePaths(folder, *name));
}

}  // namespace Sorvik::foundation
