// SPDX-License-Identifier: MIT
#include "c/Requests.h"

#include <chrono>
#include <mutex>
#include <set>
#include <shared_mutex>
#include <utility>

#include "SorvikProvider/frame/ProviderHost.h"
#include "frame/AbortWatchdog.h"
#include "frame/RequestQueue.h"

namespace Sorvik::c {
namespace {

constexpr std::chrono::milliseconds kShutdownTimeout{1000};

// Never destroyed: requests may run while the process exits.
struct Library {
  // Shared while a request is queued, exclusive while the library starts or ends.
  std::shared_mutex mutex;
  int uses = 0;

  std::mutex requestsMutex;
  std::set<TaskRequest*> requests;

  static Library& Get() {
    static auto& library = *new Library;
    return library;
  }
};

Outcome Aborted() { return {SORVIK_ABORTED, {}, "aborted"}; }

std::unique_ptr<sorvik_event> EndEvent(Outcome outcome) {
  auto event = std::make_unique<sorvik_event>();
  event->outcome = std::move(outcome);
  return event;
}

Outcome NotInitialized() { return {SORVIK_NOT_INITIALIZED, {}, "the library isn't initialized"}; }

Outcome Queue(const sorvik_request& request) {
  return WhileInitialized(
      [&request] { return QueueRequest(request.task) ? Outcome() : NotInitialized(); });
}

}  // namespace

TaskRequest::TaskRequest(std::shared_ptr<Channel> channel, Task task)
    : ProviderRequest({}, ProviderRef()), channel_(std::move(channel)), task_(std::move(task)) {
  Library& library = Library::Get();
  const std::lock_guard lock(library.requestsMutex);
  library.requests.insert(this);
}

TaskRequest::~TaskRequest() {
  Library& library = Library::Get();
  const std::lock_guard lock(library.requestsMutex);
  library.requests.erase(this);
}

// An object without references has run or was never queued; Abort then has no effect.
void TaskRequest::AbortAll(const EventQueue* queue) {
  Library& library = Library::Get();
  const std::lock_guard lock(library.requestsMutex);
  for (TaskRequest* request : library.requests) {
    if (queue == nullptr || request->channel_->Queue().get() == queue) request->Abort();
  }
}

void TaskRequest::Run() {
  Outcome outcome;
  try {
    outcome = TestAborted() ? Aborted() : task_(*this);
    if (TestAborted()) outcome = Aborted();
  } catch (...) {
    outcome = DescribeException();
  }
  if (AbortRecord::Of(*this).ClaimForRun()) channel_->Push(EndEvent(std::move(outcome)));
}

bool TaskRequest::Send(std::unique_ptr<sorvik_event> event) {
  if (TestAborted()) return false;
  return AbortRecord::Of(*this).IfUnanswered([&] { channel_->Push(std::move(event)); });
}

void TaskRequest::PostAborted() const { channel_->Push(EndEvent(Aborted())); }

Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> TaskRequest::GetRef() {
  return Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest>(this);
}

Outcome Start(TaskRequest::Task task, const sorvik_receiver* receiver, sorvik_request** request) {
  if (receiver != nullptr && (receiver->queue == nullptr || receiver->callback == nullptr)) {
    return {SORVIK_INVALID_ARGUMENT, {}, "a receiver needs a queue and a callback"};
  }
  auto created = std::make_unique<sorvik_request>();
  created->channel = receiver == nullptr
                         ? std::make_shared<Channel>(created.get(), nullptr, nullptr, nullptr)
                         : std::make_shared<Channel>(created.get(), receiver->queue->events,
                                                     receiver->callback, receiver->context);
  using Ref = Hestra::InterfaceRef<TaskRequest, Hestra::IThreadedQueueRequest>;
  created->task = Ref(new TaskRequest(created->channel, std::move(task)));
  // The first event may come before this function returns.
  *request = created.get();
  Outcome outcome = Queue(*created);
  if (outcome.Ok()) {
    created.release();
  } else {
    *request = nullptr;
  }
  return outcome;
}

Outcome RunAndWait(TaskRequest::Task task, sorvik_event::Result& result) {
  sorvik_request* started = nullptr;
  Outcome outcome = Start(std::move(task), nullptr, &started);
  if (!outcome.Ok()) return outcome;
  const std::unique_ptr<sorvik_request> request(started);
  for (;;) {
    std::unique_ptr<sorvik_event> event;
    request->channel->Next(-1, event);
    if (event->IsEnd()) return std::move(event->outcome);
    result = std::move(event->result);
  }
}

std::size_t CountStalledWorkers() {
  const std::shared_lock lock(Library::Get().mutex);
  return ProviderHost::GetStalledWorkerCount();
}

Outcome WhileInitialized(const std::function<Outcome()>& function) {
  Library& library = Library::Get();
  const std::shared_lock lock(library.mutex);
  if (library.uses == 0) return NotInitialized();
  return function();
}

Outcome Initialize() {
  Library& library = Library::Get();
  const std::lock_guard lock(library.mutex);
  if (library.uses == 0) {
    ProviderHost::Initialize();
    ProviderHost::RegisterAdditionalProviders();
  }
  ++library.uses;
  return {};
}

void Shutdown() {
  Library& library = Library::Get();
  const std::lock_guard lock(library.mutex);
  if (library.uses == 0 || --library.uses != 0) return;
  TaskRequest::AbortAll();
  ProviderHost::SetShutdownTimeout(kShutdownTimeout);
  ProviderHost::Shutdown();
}

}  // namespace Sorvik::c

using Sorvik::c::Guarded;
using Sorvik::c::Outcome;
using Sorvik::c::TaskRequest;

sorvik_status sorvik_initialize(void) {
  return Guarded([] { return Sorvik::c::Initialize(); });
}

void sorvik_shutdown(void) {
  Guarded([] {
    Sorvik::c::Shutdown();
    return Outcome();
  });
}

size_t sorvik_stalled_workers(void) { return Sorvik::c::CountStalledWorkers(); }

sorvik_status sorvik_queue_create(sorvik_queue** queue) {
  if (queue != nullptr) *queue = nullptr;
  return Guarded([&]() -> Outcome {
    if (queue == nullptr) return {SORVIK_INVALID_ARGUMENT, {}, "queue must not be NULL"};
    auto created = std::make_unique<sorvik_queue>();
    if (created->events->Descriptor() < 0) return {SORVIK_FAILED, {}, "too many open files"};
    *queue = created.release();
    return {};
  });
}

int sorvik_queue_descriptor(const sorvik_queue* queue) { return queue->events->Descriptor(); }

size_t sorvik_queue_dispatch(sorvik_queue* queue, size_t max_events) {
  size_t count = 0;
  while (count < max_events) {
    const auto channel = queue->events->Take();
    if (!channel) break;
    if (channel->Dispatch()) ++count;
  }
  return count;
}

void sorvik_queue_free(sorvik_queue* queue) {
  if (queue == nullptr) return;
  TaskRequest::AbortAll(queue->events.get());
  queue->events->Close();
  delete queue;
}

sorvik_status sorvik_request_next(sorvik_request* request, int milliseconds, sorvik_event** event) {
  if (event != nullptr) *event = nullptr;
  return Guarded([&]() -> Outcome {
    if (request == nullptr || event == nullptr) {
      return {SORVIK_INVALID_ARGUMENT, {}, "request and event must not be NULL"};
    }
    if (request->channel->Queue()) {
      return {SORVIK_INVALID_ARGUMENT, {}, "the events of this request go to its queue"};
    }
    std::unique_ptr<sorvik_event> next;
    Outcome outcome = request->channel->Next(milliseconds, next);
    *event = next.release();
    return outcome;
  });
}

void sorvik_request_abort(sorvik_request* request) {
  if (request != nullptr) request->task->Abort();
}

void sorvik_request_free(sorvik_request* request) {
  if (request == nullptr) return;
  request->channel->Detach();
  request->task->Abort();
  delete request;
}
