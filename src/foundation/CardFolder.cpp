// SPDX-License-Identifier: MIT
#include "foundation/CardFolder.h"

#include <algorithm>
#include <functional>

#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "foundation/ReadAhead.h"
#include "foundation/hestra/Directory.h"
#include "foundation/platform/NameOrder.h"

namespace Sorvik::foundation {
namespace {

using platform::FileKind;
using platform::FolderItem;

bool IsFileOrFolder(std::optional<FileKind> kind) {
  return kind == FileKind::kRegular || kind == FileKind::kDirectory;
}

bool IsPlainName(std::string_view name) {
  return !name.empty() && name.find(platform::kSeparator) == name.npos &&
         name.find('\0') == name.npos;
}

bool IsAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::size_t HashFolded(std::string_view name) { return std::hash<std::string>()(FoldCase(name)); }

void AddFilesBelow(const std::string& folder, std::string_view extension, int depthLeft,
                   std::vector<std::string>& files) {
  const auto items = Hestra::Directory::GetItems(folder);
  if (!items) return;
  for (const FolderItem& item : *items) {
    if (item.kind != FileKind::kRegular) continue;
    if (extension.empty() || HasExtension(item.name, extension)) {
      files.push_back(JoinPath(folder, item.name));
    }
  }
  if (depthLeft <= 0) return;
  std::vector<std::string> subfolders;
  for (const FolderItem& item : *items) {
    if (item.kind == FileKind::kDirectory && !item.isLink) {
      subfolders.push_back(JoinPath(folder, item.name));
    }
  }
  FolderReadAhead ahead(subfolders);
  for (std::size_t i = 0; i < subfolders.size(); ++i) {
    ahead.Await(i);
    AddFilesBelow(subfolders[i], extension, depthLeft - 1, files);
  }
}

}  // namespace

std::shared_ptr<const CardFolder> CardFolder::Of(std::string_view path) {
  const std::string key(WithoutTrailingSlash(path));
  return CallScope::Share<CardFolder>(key, [&key] { return std::make_shared<CardFolder>(key); });
}

CardFolder::CardFolder(std::string_view path) : path_(WithoutTrailingSlash(path)) {}

std::string CardFolder::PathOf(std::string_view name) const { return JoinPath(path_, name); }

const CardFolder::Listing& CardFolder::Listed() const {
  std::call_once(listedOnce_, [this] {
    if (IsValidPath(path_)) listing_.items = Hestra::Directory::GetItems(path_);
  });
  return listing_;
}

const std::vector<CardFolder::HashedItem>& CardFolder::ByFoldedName() const {
  std::call_once(hashedOnce_, [this] {
    const auto& items = Listed().items;
    if (!items) return;
    byFoldedName_.reserve(items->size());
    for (std::size_t i = 0; i < items->size(); ++i) {
      byFoldedName_.push_back({HashFolded((*items)[i].name), i});
    }
    std::ranges::stable_sort(byFoldedName_, {}, &HashedItem::hash);
  });
  return byFoldedName_;
}

std::optional<FileKind> CardFolder::KindOf(std::string_view name, Lookup lookup) const {
  if (!IsPlainName(name)) return std::nullopt;
  if (lookup == Lookup::kDisk || !IsReadable()) return platform::KindOf(PathOf(name));
  const std::size_t hash = HashFolded(name);
  // File systems may also equate names that differ in how characters beyond ASCII are composed.
  bool askDisk = !IsAscii(name);
  const auto& hashed = ByFoldedName();
  auto entry = std::ranges::lower_bound(hashed, hash, {}, &HashedItem::hash);
  for (; entry != hashed.end() && entry->hash == hash; ++entry) {
    const FolderItem& item = (*Listed().items)[entry->item];
    if (item.name == name && item.kind != FileKind::kDangling) return item.kind;
    askDisk = true;
  }
  return askDisk ? platform::KindOf(PathOf(name)) : std::nullopt;
}

bool CardFolder::Contains(std::string_view name, Lookup lookup) const {
  return IsFileOrFolder(KindOf(name, lookup));
}

bool CardFolder::ContainsFolder(std::string_view name, Lookup lookup) const {
  return KindOf(name, lookup) == FileKind::kDirectory;
}

std::string_view CardFolder::FirstOf(std::span<const std::string_view> names) const {
  const auto found =
      std::ranges::find_if(names, [this](std::string_view name) { return Contains(name); });
  return found == names.end() ? std::string_view() : *found;
}

std::optional<std::string> CardFolder::Find(std::string_view name) const {
  if (Contains(name)) return std::string(name);
  if (!IsReadable()) return std::nullopt;
  const std::size_t hash = HashFolded(name);
  const auto& hashed = ByFoldedName();
  auto entry = std::ranges::lower_bound(hashed, hash, {}, &HashedItem::hash);
  for (; entry != hashed.end() && entry->hash == hash; ++entry) {
    const FolderItem& item = (*Listed().items)[entry->item];
    if (IsFileOrFolder(item.kind) && EqualIgnoringCase(item.name, name)) return item.name;
  }
  return std::nullopt;
}

std::vector<std::string> CardFolder::Names(FileKind kind, std::string_view extension,
                                           bool withHidden) const {
  std::vector<std::string> names;
  if (!IsReadable()) return names;
  for (const FolderItem& item : *Listed().items) {
    if (item.kind != kind || (!withHidden && IsHidden(item.name))) continue;
    if (extension.empty() || HasExtension(item.name, extension)) names.push_back(item.name);
  }
  return names;
}

std::vector<std::string> CardFolder::Files(std::string_view extension) const {
  return Names(FileKind::kRegular, extension, true);
}

std::vector<std::string> CardFolder::Folders() const {
  return Names(FileKind::kDirectory, {}, true);
}

std::vector<std::string> CardFolder::VisibleFiles(std::string_view extension) const {
  return Names(FileKind::kRegular, extension, false);
}

std::vector<std::string> CardFolder::VisibleFolders() const {
  return Names(FileKind::kDirectory, {}, false);
}

std::vector<std::string> CardFolder::VisibleNames() const {
  std::vector<std::string> names;
  if (!IsReadable()) return names;
  for (const FolderItem& item : *Listed().items) {
    if (IsFileOrFolder(item.kind) && !IsHidden(item.name)) names.push_back(item.name);
  }
  return names;
}

std::optional<std::string> CardFolder::FindVisibleFile(
    const std::function<bool(const std::string& name)>& matches) const {
  if (!IsReadable()) return std::nullopt;
  for (const FolderItem& item : *Listed().items) {
    if (item.kind != FileKind::kRegular || IsHidden(item.name)) continue;
    if (matches(item.name)) return item.name;
  }
  return std::nullopt;
}

bool CardFolder::ListsFile(std::string_view name) const {
  if (!IsReadable()) return false;
  const auto& items = *Listed().items;
  const auto found =
      std::ranges::lower_bound(items, name, platform::LessByCodeUnits, &FolderItem::name);
  return found != items.end() && found->name == name && found->kind == FileKind::kRegular &&
         !found->isLink;
}

std::size_t CardFolder::VisibleCount() const {
  if (!IsReadable()) return 0;
  return static_cast<std::size_t>(std::ranges::count_if(
      *Listed().items,
      [](const FolderItem& item) { return IsFileOrFolder(item.kind) && !IsHidden(item.name); }));
}

bool ExistsOnDisk(std::string_view path) {
  return IsValidPath(path) && platform::KindOf(std::string(path)).has_value();
}

bool FolderExistsOnDisk(std::string_view path) {
  return IsValidPath(path) && platform::KindOf(std::string(path)) == FileKind::kDirectory;
}

bool ExistsOnCard(std::string_view path, Lookup lookup) {
  if (!IsValidPath(path)) return false;
  const std::string_view folder = ParentFolder(path);
  const std::string_view name = FileName(path);
  // The root folder isn't listed for one name, and a path with a trailing separator has no name.
  if (lookup == Lookup::kDisk || folder.size() <= 1 || name.empty()) {
    return IsFileOrFolder(platform::KindOf(std::string(path)));
  }
  return CardFolder::Of(folder)->Contains(name);
}

std::optional<std::string> FindOnCard(std::string_view path) {
  if (ExistsOnCard(path, Lookup::kListing)) return std::string(path);
  std::string folder(ParentFolder(path));
  if (folder.empty()) return std::nullopt;
  if (!CardFolder::Of(folder)->IsReadable()) {
    const std::string_view parent = ParentFolder(folder);
    const auto other = CardFolder::Of(parent)->Find(FileName(folder));
    if (parent.empty() || !other) return std::nullopt;
    folder = JoinPath(parent, *other);
  }
  const auto name = CardFolder::Of(folder)->Find(FileName(path));
  return name ? std::optional(JoinPath(folder, *name)) : std::nullopt;
}

namespace {

bool IsListedFile(std::string_view path) {
  const std::string folder(ParentFolder(path));
  return !folder.empty() && Hestra::Directory::IsListed(folder) &&
         CardFolder::Of(folder)->ListsFile(FileName(path));
}

}  // namespace

std::optional<platform::RegularFile> OpenOnCard(const std::string& path) {
  return IsListedFile(path) ? platform::RegularFile::OpenListed(path)
                            : platform::RegularFile::Open(path);
}

std::optional<std::vector<std::byte>> ReadHeadOnCard(const std::string& path,
                                                     std::size_t maxBytes) {
  const auto file = OpenOnCard(path);
  if (!file) return std::nullopt;
  return file->ReadHead(maxBytes);
}

bool MayExistOnCard(std::string_view path) {
  const std::string folder(ParentFolder(path));
  if (folder.empty() || !Hestra::Directory::IsListed(folder)) return true;
  return CardFolder::Of(folder)->Contains(FileName(path));
}

std::vector<std::string> ListFilesBelow(std::string_view folder, std::string_view extension) {
  std::vector<std::string> files;
  if (IsValidPath(folder)) {
    AddFilesBelow(std::string(WithoutTrailingSlash(folder)), extension,
                  Hestra::Directory::kMaxListingDepth, files);
  }
  return files;
}

}  // namespace Sorvik::foundation
