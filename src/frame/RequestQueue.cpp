// SPDX-License-Identifier: MIT
#include "frame/RequestQueue.h"

#include <boost/bind/bind.hpp>
#include <boost/function.hpp>
#include <optional>

#include "foundation/CallScope.h"
#include "frame/AbortWatchdog.h"
#include "frame/HostState.h"
#include "frame/RequestReads.h"

namespace Sorvik {
namespace {

using Request = Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest>;

// After the watchdog has answered, a result or exception of the run is dropped: the host already
// treats the request as finished.
void RunRequest(const Request& request, HostState* state,
                const foundation::CallScope::Cache& reads) {
  const HostState::Scope scope(*state);
  AbortRecord& record = AbortRecord::Of(*request);
  const AbortRecord::Run run(record);
  if (record.AnsweredByWatchdog()) return;
  std::optional<foundation::CallScope> shared;
  if (reads) shared.emplace(reads);
  try {
    request->Run();
  } catch (...) {
    record.ClaimForRun();  // an abort must not post in addition
    if (!record.AnsweredByWatchdog()) throw;
  }
}

}  // namespace

bool QueueRequest(const Request& request) {
  HostState& state = HostState::Get();
  const auto executor = state.executor;
  if (!executor) return false;
  const boost::function<void()> run = boost::bind(&RunRequest, request, &state, ReadsOfRequests());
  AbortRecord& record = AbortRecord::Of(*request);
  record.SetAccepted(true);
  const bool accepted = executor->Post(run);
  if (!accepted) record.SetAccepted(false);
  return accepted;
}

}  // namespace Sorvik
