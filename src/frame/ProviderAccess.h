// SPDX-License-Identifier: MIT
// Access to the internal interfaces of a registered provider, such as CardChecker.
#pragma once

#include "SorvikProvider/frame/ProviderWrapper.h"

namespace Sorvik {

class ProviderAccess {
 public:
  // The interface of the wrapped provider; nullptr if the provider doesn't implement it or if the
  // wrapper belongs to a host. Valid for as long as the wrapper.
  template <class Interface>
  static const Interface* InterfaceOf(const ProviderWrapper& wrapper) {
    const auto* own = dynamic_cast<const AsyncProviderWrapper*>(&wrapper);
    return own == nullptr ? nullptr : dynamic_cast<const Interface*>(own->provider_.Get());
  }
};

}  // namespace Sorvik
