// SPDX-License-Identifier: MIT
#include "providers/common/CardParts.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"

namespace Sorvik {
namespace {

using foundation::CardFolder;

std::vector<std::string> FilesNamed(const std::string& folder,
                                    std::initializer_list<std::string_view> names) {
  const auto listed = CardFolder::Of(folder);
  std::vector<std::string> files;
  for (const std::string& file : listed->Files()) {
    const bool known = std::ranges::any_of(names, [&file](std::string_view name) {
      return foundation::EqualIgnoringCase(name, file);
    });
    if (known) files.push_back(listed->PathOf(file));
  }
  return files;
}

template <class Visit>
void ForEachPath(const any_regular_t& value, const Visit& visit) {
  if (const auto* text = value.get_if<std::string>()) visit(*text);
  value.for_each_item([&visit](const any_regular_t& item) { ForEachPath(item, visit); });
}

}  // namespace

void AddStructureFiles(const std::string& folder, std::initializer_list<std::string_view> names,
                       CardDescription& card) {
  for (std::string& file : FilesNamed(folder, names)) card.AddStructureFile(std::move(file));
}

void AddStructureFilesBelow(const std::string& folder, CardDescription& card) {
  for (std::string& file : foundation::ListFilesBelow(folder)) {
    if (file.find("/.", folder.size()) == std::string::npos) card.AddStructureFile(std::move(file));
  }
}

void AddIndexFiles(const std::string& folder, std::initializer_list<std::string_view> names,
                   CardDescription& card) {
  for (std::string& file : FilesNamed(folder, names)) {
    card.AddStructureFile(file);
    card.Expect({.path = std::move(file), .role = card_role::kIndex, .required = false});
  }
}

std::string FindFolder(const std::string& parent, std::string_view name) {
  if (parent.empty()) return {};
  const auto folder = CardFolder::Of(parent);
  const auto found = folder->Find(name);
  return found && folder->ContainsFolder(*found) ? folder->PathOf(*found) : std::string();
}

EntryOfPath::EntryOfPath(const ContentMap& entries,
                         std::initializer_list<std::string_view> extensions) {
  for (const auto& [entryKey, fields] : entries) {
    const std::string& key = entryKey;
    for (const auto& [name, value] : fields) {
      ForEachPath(value, [&](const std::string& path) {
        const bool kept = std::ranges::any_of(extensions, [&path](std::string_view extension) {
          return foundation::HasExtension(path, extension);
        });
        if (kept) keys_.emplace(path, key);
      });
    }
  }
}

std::string EntryOfPath::KeyOf(const std::string& path) const {
  const auto found = keys_.find(path);
  return found == keys_.end() ? std::string() : found->second;
}

const char* RoleOfCompanion(std::string_view path) {
  using foundation::HasExtension;
  if (HasExtension(path, ".wav")) return card_role::kSound;
  if (HasExtension(path, ".mov") || HasExtension(path, ".mp4")) return card_role::kProxy;
  if (HasExtension(path, ".jpg") || HasExtension(path, ".rtn")) return card_role::kThumbnail;
  return card_role::kSidecar;
}

bool IsMediaRole(std::string_view role) {
  constexpr std::string_view kMediaRoles[] = {card_role::kEssence, card_role::kSound,
                                              card_role::kProxy, card_role::kSpan,
                                              card_role::kSegment};
  return std::ranges::find(kMediaRoles, role) != std::end(kMediaRoles);
}

std::vector<std::string> KeyList(const std::string& key) {
  return key.empty() ? std::vector<std::string>() : std::vector<std::string>{key};
}

}  // namespace Sorvik
