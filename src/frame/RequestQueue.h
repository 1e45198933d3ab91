// SPDX-License-Identifier: MIT
#pragma once

#include "SorvikProvider/frame/ProviderRequest.h"

namespace Sorvik {

// The one way of requests to the provider executor. False if there is no executor: the request is
// never run and never answered.
bool QueueRequest(const RequestRef& request);

}  // namespace Sorvik
