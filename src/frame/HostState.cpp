// SPDX-License-Identifier: MIT
#include "frame/HostState.h"

#include <atomic>
#include <memory>

namespace Sorvik {
namespace {

std::atomic<HostState*>& Current() {
  static auto& current = *new std::atomic<HostState*>(new HostState);
  return current;
}

thread_local HostState* threadState = nullptr;

}  // namespace

HostState& HostState::Get() noexcept { return threadState != nullptr ? *threadState : *Current(); }

void HostState::Abandon() {
  // Keeps them reachable, so that a leak checker reports only leaks that aren't on purpose.
  static auto& abandoned = *new std::vector<HostState*>;
  auto next = std::make_unique<HostState>();
  HostState* const stuck = Current();
  abandoned.push_back(stuck);
  stuck->pool->Abandon();
  Current() = next.release();
}

HostState::Scope::Scope(HostState& state) noexcept { threadState = &state; }

HostState::Scope::~Scope() { threadState = nullptr; }

}  // namespace Sorvik
