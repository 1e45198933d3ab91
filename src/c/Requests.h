// SPDX-License-Identifier: MIT
// Requests of the C interface: a function that runs on a worker and sends events.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "c/Events.h"

namespace Sorvik::c {

class TaskRequest final : public ProviderRequest {
 public:
  // Runs on a worker. Sends results with Send, and returns the status of the end.
  using Task = std::function<Outcome(TaskRequest& request)>;
  TaskRequest(std::shared_ptr<Channel> channel, Task task);

  void Run() override;
  Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() override;

  // Sends a result to the caller. Returns false, and drops the result, if the request is aborted.
  bool Send(std::unique_ptr<sorvik_event> event);
  template <class T>
  bool Send(std::unique_ptr<T> result) {
    auto event = std::make_unique<sorvik_event>();
    event->result = std::move(result);
    return Send(std::move(event));
  }

  // Aborts all requests, or those of one queue.
  static void AbortAll(const EventQueue* queue = nullptr);

 private:
  ~TaskRequest() override;
  void PostAborted() const override;

  const std::shared_ptr<Channel> channel_;
  const Task task_;
};

// Creates a request for `task` and queues it. An aborted or failed one ends with that status.
Outcome Start(TaskRequest::Task task, const sorvik_receiver* receiver, sorvik_request** request);

// Runs `task` on a worker, waits, and moves its first result of type T to `result`.
Outcome RunAndWait(TaskRequest::Task task, sorvik_event::Result& result);

std::size_t CountStalledWorkers();

// Calls `function` while the library can't be shut down.
Outcome WhileInitialized(const std::function<Outcome()>& function);

// Counts the uses of the library.
Outcome Initialize();
void Shutdown();

}  // namespace Sorvik::c

struct sorvik_request {
  Hestra::InterfaceRef<Sorvik::c::TaskRequest, Hestra::IThreadedQueueRequest> task;
  std::shared_ptr<Sorvik::c::Channel> channel;
};
