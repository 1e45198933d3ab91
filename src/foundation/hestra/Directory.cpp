// SPDX-License-Identifier: MIT
#include "foundation/hestra/Directory.h"

#include <algorithm>
#include <optional>

#include "foundation/CallScope.h"
#include "foundation/hestra/PathUtils.h"

namespace Hestra::Directory {
namespace {

using Sorvik::platform::FileKind;
using Sorvik::platform::FolderItem;

struct FolderRecord {
  std::optional<std::vector<FolderItem>> items;
};

bool IsAsciiText(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Compares the length of the extension in bytes before converting it to UTF-16, which decides about
// most names of a large folder.
class ExtensionFilter {
 public:
  explicit ExtensionFilter(std::u16string_view extension)
      : folded_(tarnwick::utility::FoldCase(extension)) {}

  bool Accepts(std::string_view name) const {
    if (folded_.empty()) return true;
    const auto dot = name.rfind('.');
    if (dot == name.npos || dot == 0) return false;
    const std::string_view end = name.substr(dot);
    if (IsAsciiText(end) && end.size() != folded_.size()) return false;
    return tarnwick::utility::FoldCase(MakeString(end)) == folded_;
  }

 private:
  UTF16String folded_;
};

void AddFiles(const std::string& folder, const ExtensionFilter& filter, int depthLeft,
              std::vector<UTF16String>& files) {
  const auto items = GetItems(folder);
  if (!items) return;
  const UTF16String prefix = PathUtils::AddTrailingSlash(MakeString(folder));
  for (const FolderItem& item : *items) {
    if (item.kind == FileKind::kRegular && filter.Accepts(item.name)) {
      files.push_back(prefix + MakeString(item.name));
    }
  }
  if (depthLeft <= 0) return;
  for (const FolderItem& item : *items) {
    if (item.kind != FileKind::kDirectory || item.isLink) continue;
    AddFiles(MakeStdString(prefix) + item.name, filter, depthLeft - 1, files);
  }
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
  if (!PathUtils::IsValidPath(folder)) return files;
  AddFiles(MakeStdString(PathUtils::RemoveTrailingSlash(folder)), ExtensionFilter(extension),
           recursive ? kMaxListingDepth : 0, files);
  return files;
}

std::vector<UTF16String> GetContainedPaths(const UTF16String& folder) {
  std::vector<UTF16String> paths;
  if (!PathUtils::IsValidPath(folder)) return paths;
  const auto items = GetItems(MakeStdString(PathUtils::RemoveTrailingSlash(folder)));
  if (!items) return paths;
  const UTF16String prefix = PathUtils::AddTrailingSlash(folder);
  for (const FolderItem& item : *items) {
    if (item.kind != FileKind::kRegular && item.kind != FileKind::kDirectory) continue;
    paths.push_back(prefix + MakeString(item.name));
  }
  return paths;
}

void GetContainedFileAndDirectoryPaths(const UTF16String& folder, std::vector<UTF16String>& files,
                                       std::vector<UTF16String>& directories) {
  files.clear();
  directories.clear();
  if (!PathUtils::IsValidPath(folder)) return;
  const auto items = GetItems(MakeStdString(PathUtils::RemoveTrailingSlash(folder)));
  if (!items) return;
  const UTF16String prefix = PathUtils::AddTrailingSlash(folder);
  for (const FolderItem& item : *items) {
    if (item.kind == FileKind::kRegular) files.push_back(prefix + MakeString(item.name));
    if (item.kind == FileKind::kDirectory) directories.push_back(prefix + MakeString(item.name));
  }
}

}  // namespace Hestra::Directory
