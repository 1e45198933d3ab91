// SPDX-License-Identifier: MIT
#include "SorvikProvider/cardtools/FileGroup.h"

#include "SorvikProvider/frame/ProviderHost.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/platform/ShareAccess.h"
#include "frame/FileGrouper.h"
#include "frame/ProviderAccess.h"

namespace Sorvik {

std::optional<FileGroup> GetFileGroup(const std::string& path) {
  if (!foundation::IsValidPath(path)) return std::nullopt;
  const foundation::CallScope scope;  // all providers look at the same folder
  const platform::ShareScope shares(path);
  const std::string file = foundation::NormalizedPath(path);
  const std::string folder(foundation::ParentFolder(file));
  const std::string name(foundation::FileName(file));
  if (foundation::CardFolder::Of(folder)->KindOf(name) != platform::FileKind::kRegular) {
    return std::nullopt;
  }
  for (const ProviderWrapper* wrapper : ProviderHost::GetAllProviders()) {
    const auto* grouper = ProviderAccess::InterfaceOf<FileGrouper>(*wrapper);
    if (grouper == nullptr) continue;
    if (auto group = grouper->GroupOf(folder, name)) {
      group->identification = wrapper->GetIdentification();
      return group;
    }
  }
  return std::nullopt;
}

}  // namespace Sorvik
