// SPDX-License-Identifier: MIT
#include "SorvikProvider/cardtools/CardCheck.h"

#include "SorvikProvider/frame/ProviderHost.h"
#include "foundation/platform/ShareAccess.h"
#include "frame/CardChecker.h"
#include "frame/ProviderAccess.h"

namespace Sorvik {

StructureFindings CheckStructure(const std::string& path, const std::string& identification) {
  const platform::ShareScope shares(path);
  for (const ProviderWrapper* wrapper : ProviderHost::GetAllProviders()) {
    if (wrapper->GetIdentification() != identification) continue;
    const auto* checker = ProviderAccess::InterfaceOf<CardChecker>(*wrapper);
    const bool claimed = checker != nullptr && wrapper->CanProvideFor(path) >= 1;
    return claimed ? checker->CheckStructure(path) : StructureFindings();
  }
  return {};
}

}  // namespace Sorvik
