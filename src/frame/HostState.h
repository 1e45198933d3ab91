// SPDX-License-Identifier: MIT
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <vector>

#include "SorvikProvider/frame/ProviderWrapper.h"
#include "foundation/tarnwick/WorkerPool.h"

namespace Sorvik {

// What exists from ProviderHost::Initialize to the last Shutdown.
struct HostState {
  std::vector<ProviderWrapper*> providers;  // owned
  boost::shared_ptr<tarnwick::threads::WorkerPool> pool;
  boost::shared_ptr<tarnwick::threads::AsyncExecutor> executor;  // on `pool`

  // The state that a request on the calling thread was queued in, otherwise the current one. Never
  // destroyed, so that a process may end while workers use it.
  static HostState& Get() noexcept;

  // Leaves the current state to its stalled workers and starts an empty one. It is leaked: a worker
  // that returns hours later still finds its providers.
  static void Abandon();

  // Makes `state` that of the calling thread.
  class Scope {
   public:
    explicit Scope(HostState& state) noexcept;
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
  };
};

}  // namespace Sorvik
