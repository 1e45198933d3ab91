// SPDX-License-Identifier: MIT
// The thread pool of queued requests.
#pragma once

#include <boost/function.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <exception>
#include <functional>

#include "SorvikProvider/foundation/Export.h"

namespace tarnwick::threads {

// All operations may be called on any thread; WaitForAccepted not on a worker.
class SORVIK_EXPORT AsyncExecutor {
 public:
  virtual ~AsyncExecutor();
  // Queues `function` to run once on a worker. Returns false, and queues nothing, after
  // StopAccepting. Exceptions of the function go to the failure hook; the worker continues.
  virtual bool Post(boost::function<void()> function) = 0;
  // From now on Post refuses functions. Accepted ones still run.
  virtual void StopAccepting() = 0;
  // Returns when all accepted functions have run.
  virtual void WaitForAccepted() = 0;
};

// Creates a pool of 4 to 16 threads, sized for blocking I/O rather than computation.
SORVIK_EXPORT boost::shared_ptr<AsyncExecutor> CreateIOBoundExecutor();

// Creates an executor that shares the threads of `base` and keeps it alive. At most `width` of its
// functions run at once; -1 means no limit.
SORVIK_EXPORT boost::shared_ptr<AsyncExecutor> CreateSubExecutor(
    boost::shared_ptr<AsyncExecutor> base, int width);

// Called on the worker with the exception of a function. A request whose provider throws posts no
// message, so this is the only report of it. Set the hook before the first request; an empty
// function removes it. Without a hook exceptions are dropped.
using FailureHook = std::function<void(std::exception_ptr)>;
SORVIK_EXPORT void SetFailureHook(FailureHook hook);

}  // namespace tarnwick::threads
