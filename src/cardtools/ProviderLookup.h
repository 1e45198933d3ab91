// SPDX-License-Identifier: MIT
// Finds registered providers.
#pragma once

#include <string>

#include "SorvikProvider/frame/ProviderHost.h"

namespace Sorvik {

// The provider with that identification; null if there is none.
inline const ProviderWrapper* FindProvider(const std::string& identification) {
  for (const ProviderWrapper* wrapper : ProviderHost::GetAllProviders()) {
    if (wrapper->GetIdentification() == identification) return wrapper;
  }
  return nullptr;
}

}  // namespace Sorvik
