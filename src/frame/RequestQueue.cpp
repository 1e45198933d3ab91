// SPDX-License-Identifier: MIT
#include "frame/RequestQueue.h"

#include <boost/bind/bind.hpp>
#include <boost/function.hpp>

#include "SorvikProvider/frame/ProviderHost.h"

namespace Sorvik {
namespace {

void RunRequest(const RequestRef& request) { request->Run(); }

}  // namespace

bool QueueRequest(const RequestRef& request) {
  const auto executor = ProviderHost::GetProviderExecutor();
  if (!executor) return false;
  const boost::function<void()> run = boost::bind(&RunRequest, request);
  return executor->Post(run);
}

}  // namespace Sorvik
