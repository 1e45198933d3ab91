// SPDX-License-Identifier: MIT
// Finds registered providers.
#pragma once

#include <string_view>

#include "SorvikProvider/frame/ProviderHost.h"

namespace Sorvik {

// The provider with that identification; null if there is none.
inline const ProviderWrapper* FindProvider(std::string_view identification) {
  for (const ProviderWrapper* wrapper : ProviderHost::GetAllProviders()) {
    if (wrapper->GetIdentification() == identification) return wrapper;
  }
  return nullptr;
}

}  // namespace Sorvik
