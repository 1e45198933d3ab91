// SPDX-License-Identifier: MIT
#pragma once

#include "foundation/CallScope.h"

namespace Sorvik {

// What the requests that this thread queues share (SharedReads); null if each reads on its own.
foundation::CallScope::Cache ReadsOfRequests();

}  // namespace Sorvik
