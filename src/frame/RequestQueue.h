// SPDX-License-Identifier: MIT
#pragma once

#include "SorvikProvider/frame/ProviderRequest.h"

namespace Sorvik {

// Posts a request to the provider executor. Returns false if there is none: the request then never
// runs and posts no message.
bool QueueRequest(
    const Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest>& request);

}  // namespace Sorvik
