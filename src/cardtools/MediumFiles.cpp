// SPDX-License-Identifier: MIT
#include "SorvikProvider/cardtools/MediumFiles.h"

#include <algorithm>
#include <string_view>

#include "cardtools/CardContents.h"
#include "cardtools/CardInventory.h"
#include "foundation/Paths.h"
#include "foundation/platform/ShareAccess.h"

namespace Sorvik {
namespace {

// What cameras write for the medium: Sony's database of stills and clips with its mark, the folders
// of an AVCHD structure without clips, ARRI's looks, and JVC's MOV clips, which have no structure.
constexpr std::string_view kMediumFolders[] = {
    "PRIVATE/DATABASE", "PRIVATE/SONY",   "PRIVATE/AVF_INFO", "AVF_INFO",
    "PRIVATE/AVCHD",    "ARRI/LOOKFILES", "PRIVATE/JVC/CQAV",
};

bool StartsWithFolder(std::string_view path, std::string_view folder) {
  return path.size() > folder.size() && path[folder.size()] == '/' &&
         foundation::EqualIgnoringCase(path.substr(0, folder.size()), folder);
}

}  // namespace

std::vector<CardFile> ListMediumFiles(const std::string& path, const std::vector<FoundCard>& cards,
                                      MediumFileScope scope,
                                      const std::function<bool()>& isStopped) {
  const platform::ShareScope shares(path);
  const std::string root(foundation::WithoutTrailingSlash(path));
  const auto isInCard = [&cards](const std::string& folder) {
    return std::ranges::any_of(cards, [&folder](const FoundCard& card) {
      return folder == card.path || foundation::IsInside(folder, card.path);
    });
  };
  if (isInCard(root)) return {};
  const auto relative = [&root](std::string_view name) {
    name.remove_prefix(std::min(name.size(), root == "/" ? root.size() : root.size() + 1));
    return name;
  };
  const auto isOfMedium = [](std::string_view name) {
    return std::ranges::any_of(
        kMediumFolders, [name](std::string_view folder) { return StartsWithFolder(name, folder); });
  };
  // A folder is listed if a card isn't in it, and if the scope can have files in it.
  const auto isListed = [&](const std::string& folder) {
    if ((isStopped && isStopped()) || isInCard(folder)) return false;
    if (scope == MediumFileScope::kAll) return true;
    const std::string name(relative(folder));
    return isOfMedium(name + "/") || std::ranges::any_of(kMediumFolders, [&](auto known) {
             return name.empty() || StartsWithFolder(known, name);
           });
  };
  std::vector<CardFile> files;
  const CardListing listing(root, isListed);
  for (const InventoryFile& file : listing.Files()) {
    const bool ofMedium = !file.hidden && isOfMedium(relative(file.path));
    if (!ofMedium && scope != MediumFileScope::kAll) continue;
    const auto role = ofMedium      ? CardFileRole::kStructure
                      : file.hidden ? CardFileRole::kHidden
                                    : CardFileRole::kForeign;
    files.push_back({file.path, role, file.bytes, RoleOfName(file.path), {}, ofMedium});
  }
  return files;
}

}  // namespace Sorvik
