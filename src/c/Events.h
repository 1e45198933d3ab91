// SPDX-License-Identifier: MIT
// How the events of a request get from its worker to the caller.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <variant>

#include "SorvikProvider/c/sorvik.h"
#include "c/Errors.h"
#include "c/Objects.h"
#include "foundation/platform/WakeEvent.h"

// A result of a request, or its end if `result` is empty and `isProblem` false.
struct sorvik_event {
  using Result =
      std::variant<std::monostate, std::unique_ptr<sorvik_card>, std::unique_ptr<sorvik_listing>,
                   std::unique_ptr<sorvik_files>, std::unique_ptr<sorvik_report>,
                   std::unique_ptr<sorvik_picture>, std::unique_ptr<sorvik_sources>,
                   std::unique_ptr<sorvik_parts>, std::unique_ptr<sorvik_join_lists>>;

  Result result = {};
  Sorvik::c::Outcome outcome = {};
  bool isProblem = false;

  bool IsEnd() const noexcept { return result.index() == 0 && !isProblem; }
};

namespace Sorvik::c {

class Channel;

// The events of all requests of one sorvik_queue, in order. Any thread.
class EventQueue {
 public:
  // -1 if the process has no descriptor left.
  int Descriptor() const noexcept { return wake_.Descriptor(); }
  // Queues the next event of `channel`, unless the queue is closed.
  void Add(std::shared_ptr<Channel> channel);
  // Returns the channel of the oldest event; nullptr if there is none.
  std::shared_ptr<Channel> Take();
  // Drops all events, present and future.
  void Close();

 private:
  platform::WakeEvent wake_;
  std::mutex mutex_;
  std::deque<std::shared_ptr<Channel>> channels_;
  bool closed_ = false;
};

// The events of one request. Any thread.
class Channel : public std::enable_shared_from_this<Channel> {
 public:
  // Events go to `queue` and from there to the callback, or without a queue to Next.
  Channel(sorvik_request* handle, std::shared_ptr<EventQueue> queue, sorvik_callback callback,
          void* context)
      : queue_(std::move(queue)), callback_(callback), context_(context), handle_(handle) {}

  const std::shared_ptr<EventQueue>& Queue() const noexcept { return queue_; }

  void Push(std::unique_ptr<sorvik_event> event);
  // Waits at most `milliseconds` (negative: forever) for the next event.
  Outcome Next(int milliseconds, std::unique_ptr<sorvik_event>& event);
  // Passes the next event to the callback. Returns false if the channel is detached.
  bool Dispatch();
  // Drops all events, present and future.
  void Detach();

 private:
  std::unique_ptr<sorvik_event> Pop();

  const std::shared_ptr<EventQueue> queue_;
  const sorvik_callback callback_;
  void* const context_;
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<std::unique_ptr<sorvik_event>> events_;
  sorvik_request* handle_;  // nullptr: detached
  bool ended_ = false;      // END has been taken
};

}  // namespace Sorvik::c

struct sorvik_queue {
  std::shared_ptr<Sorvik::c::EventQueue> events = std::make_shared<Sorvik::c::EventQueue>();
};
