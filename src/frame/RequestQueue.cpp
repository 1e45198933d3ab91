// SPDX-License-Identifier: MIT
#include "frame/RequestQueue.h"

#include <boost/bind/bind.hpp>
#include <boost/function.hpp>

#include "frame/AbortWatchdog.h"
#include "frame/HostState.h"

namespace Sorvik {
namespace {

using Request = Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest>;

// After the watchdog has answered, a result or exception of the run is dropped: the host already
// treats the request as finished.
void RunRequest(const Request& request, HostState* state) {
  const HostState::Scope scope(*state);
  AbortRecord& record = AbortRecord::Of(*request);
  const AbortRecord::Run run(record);
  if (record.AnsweredByWatchdog()) return;
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
  const boost::function<void()> run = boost::bind(&RunRequest, request, &state);
  AbortRecord& record = AbortRecord::Of(*request);
  record.SetAccepted(true);
  const bool accepted = executor->Post(run);
  if (!accepted) record.SetAccepted(false);
  return accepted;
}

}  // namespace Sorvik
