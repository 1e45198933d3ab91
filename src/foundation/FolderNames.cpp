// SPDX-License-Identifier: MIT
#include "foundation/FolderNames.h"

#include <algorithm>
#include <utility>

#include "SorvikProvider/foundation/UTF16String.h"
#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"

namespace Sorvik::foundation {
namespace {

bool IsAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string Folded(std::string_view name) {
  if (!IsAscii(name)) {
    return Hestra::MakeStdString(tarnwick::utility::FoldCase(Hestra::MakeString(name)));
  }
  std::string folded(name);
  for (char& c : folded) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return folded;
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

FolderNames::FolderNames(std::string folder) : folder_(std::move(folder)) {
  const auto items = Hestra::Directory::GetItems(folder_);
  if (!items) return;
  listed_ = true;
  kinds_.reserve(items->size());
  folded_.reserve(items->size());
  for (const platform::FolderItem& item : *items) {
    folded_.insert(Folded(item.name));
    if (item.kind != platform::FileKind::kDangling) kinds_.emplace(item.name, item.kind);
  }
}

std::optional<platform::FileKind> FolderNames::AskDisk(const std::string& name) const {
  return platform::KindOf(folder_ + platform::kSeparator + name);
}

std::optional<platform::FileKind> FolderNames::KindOf(const std::string& name) const {
  if (name.empty() || name.find(platform::kSeparator) != name.npos ||
      name.find('\0') != name.npos) {
    return std::nullopt;
  }
  if (!listed_) return AskDisk(name);
  if (const auto found = kinds_.find(name); found != kinds_.end()) return found->second;
  // File systems may also see names alike that differ in how characters beyond ASCII are composed.
  const bool mayDiffer = !IsAscii(name) || folded_.contains(Folded(name));
  return mayDiffer ? AskDisk(name) : std::nullopt;
}

}  // namespace Sorvik::foundation
