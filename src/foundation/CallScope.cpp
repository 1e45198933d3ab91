// SPDX-License-Identifier: MIT
#include "foundation/CallScope.h"

#include "foundation/platform/AccessTimes.h"

namespace Sorvik::foundation {
namespace {

thread_local void* currentRecords = nullptr;

}  // namespace

CallScope::CallScope() : CallScope(nullptr) {}

CallScope::CallScope(Cache cache) {
  if (currentRecords != nullptr) return;
  records_ = cache ? std::move(cache) : NewCache();
  currentRecords = records_.get();
  platform::ResetAccessTimes();
}

CallScope::~CallScope() {
  if (records_) currentRecords = nullptr;
}

CallScope::Records* CallScope::Current() noexcept { return static_cast<Records*>(currentRecords); }

CallScope::Cache CallScope::CurrentCache() {
  Records* const records = Current();
  return records == nullptr ? nullptr : records->shared_from_this();
}

CallScope::Cache CallScope::NewCache() { return std::make_shared<Records>(); }

CallScope::Join::Join(Cache cache) noexcept : cache_(std::move(cache)) {
  currentRecords = cache_.get();
}

CallScope::Join::~Join() { currentRecords = nullptr; }

}  // namespace Sorvik::foundation
