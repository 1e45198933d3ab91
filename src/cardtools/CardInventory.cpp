// SPDX-License-Identifier: MIT
#include "cardtools/CardInventory.h"

#include <algorithm>
#include <iterator>

#include "cardtools/CardSearch.h"
#include "foundation/Paths.h"
#include "foundation/platform/FileSystem.h"

namespace Sorvik {
namespace {

using foundation::FoldCase;
using foundation::JoinPath;
using platform::FileKind;

constexpr std::size_t kMaxFolderDepth = 64;

// Besides names that begin with a dot: what Windows and file systems of Linux leave on a medium.
constexpr std::string_view kSystemNames[] = {"System Volume Information",
                                             "$RECYCLE.BIN",
                                             "RECYCLER",
                                             "Thumbs.db",
                                             "desktop.ini",
                                             "lost+found"};

}  // namespace

bool IsSystemName(std::string_view name) {
  return foundation::IsHidden(name) ||
         std::ranges::any_of(kSystemNames, [name](std::string_view known) {
           return foundation::EqualIgnoringCase(known, name);
         });
}

CardListing::CardListing(const std::string& root, const Filter& isListed,
                         const std::vector<std::string_view>* folders)
    : root_(foundation::WithoutTrailingSlash(root)), folders_(folders) {
  AddFolder(root_, false, kMaxFolderDepth, isListed);
}

void CardListing::AddFolder(const std::string& folder, bool hidden, std::size_t depth,
                            const Filter& isListed) {
  if (!isListed(folder)) return;
  const auto items = platform::ListFolder(folder);
  if (!items) {
    if (!hidden) unreadableFolders_.push_back(folder);
    return;
  }
  for (const platform::FolderItem& item : *items) {
    std::string path = JoinPath(folder, item.name);
    const bool itemHidden = hidden || IsSystemName(item.name);
    if (item.kind == FileKind::kRegular) {
      const auto status = platform::StatusOf(path);
      files_.push_back(
          {std::move(path), status ? status->bytes : 0, itemHidden, status ? status->modified : 0});
    } else if (item.kind == FileKind::kDirectory) {
      const bool isEntered = depth < kMaxFolderDepth || EntersFolder(item.name);
      if (!item.isLink && depth > 1 && isEntered) AddFolder(path, itemHidden, depth - 1, isListed);
    } else if (!itemHidden) {
      otherNames_.push_back(std::move(path));
    }
  }
}

bool CardListing::EntersFolder(std::string_view name) const {
  return folders_ == nullptr || MatchesAny(name, *folders_);
}

bool CardListing::Covers(std::string_view path) const {
  const std::string folder = JoinPath(root_, {});
  if (!path.starts_with(folder)) return false;
  path.remove_prefix(folder.size());
  const auto slash = path.find('/');
  return slash == path.npos || EntersFolder(path.substr(0, slash));
}

CardInventory::CardInventory(const std::string& root, const Filter& isListed,
                             const std::vector<std::string_view>* folders)
    : CardListing(root, isListed, folders) {
  for (std::size_t i = 0; i < Files().size(); ++i) {
    byPath_.emplace(Files()[i].path, i);
    byFoldedPath_.emplace(FoldCase(Files()[i].path), i);
  }
}

std::optional<std::size_t> CardInventory::OtherSpelling(std::size_t index) const {
  const std::string& path = Files()[index].path;
  const auto [begin, end] = byFoldedPath_.equal_range(FoldCase(path));
  if (std::next(begin) == end) return std::nullopt;
  const auto status = platform::StatusOf(path);
  for (auto other = begin; status && other != end; ++other) {
    if (other->second == index) continue;
    const auto found = platform::StatusOf(Files()[other->second].path);
    if (found && found->IsSameFile(*status)) return other->second;
  }
  return std::nullopt;
}

std::optional<std::size_t> CardInventory::Find(std::string_view path) const {
  const std::string key(path);
  if (const auto exact = byPath_.find(key); exact != byPath_.end()) return exact->second;
  const auto [begin, end] = byFoldedPath_.equal_range(FoldCase(path));
  if (begin == end) return std::nullopt;
  const auto status = platform::StatusOf(key);
  if (!status) return std::nullopt;
  for (auto other = begin; other != end; ++other) {
    const auto found = platform::StatusOf(Files()[other->second].path);
    if (found && found->IsSameFile(*status)) return other->second;
  }
  return std::nullopt;
}

}  // namespace Sorvik
