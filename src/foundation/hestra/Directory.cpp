// SPDX-License-Identifier: MIT
#include "foundation/hestra/Directory.h"

#include <algorithm>
#include <optional>

#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/hestra/PathUtils.h"

namespace Hestra::Directory {
namespace {

using Sorvik::foundation::CardFolder;
using Sorvik::foundation::ListFilesBelow;
using Sorvik::platform::FolderItem;

struct FolderRecord {
  std::optional<std::vector<FolderItem>> items;
};

// The paths of `names` in `folder`.
void AddPaths(const CardFolder& folder, const std::vector<std::string>& names,
              std::vector<UTF16String>& paths) {
  for (const std::string& name : names) paths.push_back(MakeString(folder.PathOf(name)));
}

}  // namespace

std::shared_ptr<const std::vector<FolderItem>> GetItems(const std::string& folder) {
  const auto record = Sorvik::foundation::CallScope::Remember<FolderRecord>(
      folder, [&] { return FolderRecord{Sorvik::platform::ListFolder(folder)}; });
  if (!record->items) return nullptr;
  return {record, &*record->items};
}

bool IsListed(const std::string& folder) {
  return Sorvik::foundation::CallScope::Kept<FolderRecord>(folder) != nullptr;
}

bool IsDirectory(const UTF16String& path) { return PathUtils::IsDirectory(path); }

std::vector<UTF16String> GetContainedFilePaths(const UTF16String& folder,
                                               std::u16string_view extension, bool recursive) {
  std::vector<UTF16String> files;
  const std::string filter = MakeStdString(extension);
  if (!recursive) {
    const auto listed = CardFolder::Of(MakeStdString(folder));
    AddPaths(*listed, listed->Files(filter), files);
    return files;
  }
  for (const std::string& file : ListFilesBelow(MakeStdString(folder), filter)) {
    files.push_back(MakeString(file));
  }
  return files;
}

std::vector<UTF16String> GetContainedPaths(const UTF16String& folder) {
  std::vector<UTF16String> paths, directories;
  GetContainedFileAndDirectoryPaths(folder, paths, directories);
  paths.insert(paths.end(), directories.begin(), directories.end());
  std::ranges::sort(paths);
  return paths;
}

void GetContainedFileAndDirectoryPaths(const UTF16String& folder, std::vector<UTF16String>& files,
                                       std::vector<UTF16String>& directories) {
  files.clear();
  directories.clear();
  const auto listed = CardFolder::Of(MakeStdString(folder));
  AddPaths(*listed, listed->Files(), files);
  AddPaths(*listed, listed->Folders(), directories);
}

}  // namespace Hestra::Directory
