// SPDX-License-Identifier: MIT
#include "foundation/FolderNames.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

#include "SorvikProvider/foundation/UTF16String.h"
#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"

namespace Sorvik::foundation {
namespace {

bool IsAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::size_t HashRegardlessOfCase(std::string_view name) {
  std::string folded;
  if (IsAscii(name)) {
    folded = name;
    for (char& c : folded) {
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
  } else {
    folded = Hestra::MakeStdString(tarnwick::utility::FoldCase(Hestra::MakeString(name)));
  }
  return std::hash<std::string_view>()(folded);
}

}  // namespace

std::shared_ptr<const FolderNames> FolderNames::Of(const std::string& folder) {
  return CallScope::Remember<FolderNames>(folder, [&folder] { return FolderNames(folder); });
}

bool FolderNames::MayExist(const std::string& path) {
  const auto slash = path.rfind(platform::kSeparator);
  if (slash == path.npos) return true;
  const std::string folder = path.substr(0, slash);
  if (!Hestra::Directory::IsListed(folder)) return true;
  return Of(folder)->Holds(path.substr(slash + 1));
}

FolderNames::FolderNames(std::string folder)
    : folder_(std::move(folder)), items_(Hestra::Directory::GetItems(folder_)) {
  if (!items_) return;
  places_.reserve(items_->size());
  for (std::size_t i = 0; i < items_->size(); ++i) {
    places_.push_back({HashRegardlessOfCase((*items_)[i].name), i});
  }
  std::ranges::sort(places_, {}, &Place::hash);
}

std::optional<platform::FileKind> FolderNames::AskDisk(const std::string& name) const {
  return platform::KindOf(folder_ + platform::kSeparator + name);
}

std::optional<platform::FileKind> FolderNames::KindOf(const std::string& name) const {
  if (name.empty() || name.find(platform::kSeparator) != name.npos ||
      name.find('\0') != name.npos) {
    return std::nullopt;
  }
  if (!items_) return AskDisk(name);
  const std::size_t hash = HashRegardlessOfCase(name);
  // File systems may also see names alike that differ in how characters beyond ASCII are composed.
  bool mayDiffer = !IsAscii(name);
  auto place = std::ranges::lower_bound(places_, hash, {}, &Place::hash);
  for (; place != places_.end() && place->hash == hash; ++place) {
    const platform::FolderItem& item = (*items_)[place->item];
    if (item.name == name && item.kind != platform::FileKind::kDangling) return item.kind;
    mayDiffer = true;
  }
  return mayDiffer ? AskDisk(name) : std::nullopt;
}

}  // namespace Sorvik::foundation
