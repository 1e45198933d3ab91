// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace Sorvik::platform {

// Runs `loop`, which must own what it uses, on a new thread that never runs signal handlers of the
// host. Returns false if there are no more threads.
bool StartDetachedThread(std::function<void()> loop);

}  // namespace Sorvik::platform
