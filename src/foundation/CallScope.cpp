// SPDX-License-Identifier: MIT
#include "foundation/CallScope.h"

namespace Sorvik::foundation {
namespace {

thread_local void* currentRecords = nullptr;

}  // namespace

CallScope::CallScope() noexcept : outermost_(currentRecords == nullptr) {
  if (outermost_) currentRecords = &records_;
}

CallScope::~CallScope() {
  if (outermost_) currentRecords = nullptr;
}

CallScope::Records* CallScope::Current() noexcept { return static_cast<Records*>(currentRecords); }

}  // namespace Sorvik::foundation
