// SPDX-License-Identifier: MIT
// The pool of workers on which queued requests run.
#pragma once

#include <boost/function.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <exception>
#include <functional>

#include "SorvikProvider/foundation/Export.h"

namespace tarnwick::threads {

// All operations may be called on any thread, WaitForAccepted only from outside the workers.
class SORVIK_EXPORT AsyncExecutor {
 public:
  virtual ~AsyncExecutor();
  // Queues `function` to run once on a worker. False, and nothing is queued, after StopAccepting.
  // A function that throws ends there: the failure hook hears of it and the worker goes on.
  virtual bool Post(boost::function<void()> function) = 0;
  // From now on Post refuses work; what was accepted still runs.
  virtual void StopAccepting() = 0;
  // Returns when everything that was accepted has run.
  virtual void WaitForAccepted() = 0;
};

// A pool sized for waiting on disks and not for computing: 4 to 16 threads.
SORVIK_EXPORT boost::shared_ptr<AsyncExecutor> CreateIOBoundExecutor();

// An executor that shares the threads of `base` and keeps it alive. At most `width` of its
// functions run at once; -1 stands for no limit of its own.
SORVIK_EXPORT boost::shared_ptr<AsyncExecutor> CreateSubExecutor(
    boost::shared_ptr<AsyncExecutor> base, int width);

// Called on the worker with what a function threw. Set it before the first request; an empty
// function takes it away. Without a hook such a failure is silent.
using FailureHook = std::function<void(std::exception_ptr)>;
SORVIK_EXPORT void SetFailureHook(FailureHook hook);

}  // namespace tarnwick::threads
