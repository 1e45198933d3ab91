// SPDX-License-Identifier: MIT
#include "c/Events.h"

#include <chrono>
#include <utility>

namespace Sorvik::c {

void EventQueue::Add(std::shared_ptr<Channel> channel) {
  const std::lock_guard lock(mutex_);
  if (closed_) return;
  channels_.push_back(std::move(channel));
  wake_.Set();
}

std::shared_ptr<Channel> EventQueue::Take() {
  const std::lock_guard lock(mutex_);
  if (channels_.empty()) return nullptr;
  std::shared_ptr<Channel> channel = std::move(channels_.front());
  channels_.pop_front();
  if (channels_.empty()) wake_.Clear();
  return channel;
}

void EventQueue::Close() {
  std::deque<std::shared_ptr<Channel>> dropped;
  const std::lock_guard lock(mutex_);
  closed_ = true;
  dropped.swap(channels_);
}

void Channel::Push(std::unique_ptr<sorvik_event> event) {
  {
    const std::lock_guard lock(mutex_);
    if (handle_ == nullptr) return;
    events_.push_back(std::move(event));
    arrived_.notify_all();
  }
  if (queue_) queue_->Add(shared_from_this());
}

std::unique_ptr<sorvik_event> Channel::Pop() {
  if (events_.empty()) return nullptr;
  std::unique_ptr<sorvik_event> event = std::move(events_.front());
  events_.pop_front();
  ended_ = event->IsEnd();
  return event;
}

Outcome Channel::Next(int milliseconds, std::unique_ptr<sorvik_event>& event) {
  std::unique_lock lock(mutex_);
  if (ended_) return {SORVIK_INVALID_ARGUMENT, {}, "the request has ended"};
  const auto hasEvent = [this] { return !events_.empty(); };
  if (milliseconds < 0) {
    arrived_.wait(lock, hasEvent);
  } else if (!arrived_.wait_for(lock, std::chrono::milliseconds(milliseconds), hasEvent)) {
    return {SORVIK_TIMED_OUT, {}, "no event in time"};
  }
  event = Pop();
  return {};
}

bool Channel::Dispatch() {
  std::unique_ptr<sorvik_event> event;
  sorvik_request* handle = nullptr;
  {
    const std::lock_guard lock(mutex_);
    handle = handle_;
    if (handle != nullptr) event = Pop();
  }
  if (!event) return false;
  callback_(handle, event.get(), context_);
  return true;
}

void Channel::Detach() {
  std::deque<std::unique_ptr<sorvik_event>> dropped;
  const std::lock_guard lock(mutex_);
  handle_ = nullptr;
  dropped.swap(events_);
}

}  // namespace Sorvik::c

namespace {

template <class T>
T* TakeResult(sorvik_event* event) {
  auto* result = std::get_if<std::unique_ptr<T>>(&event->result);
  return result == nullptr ? nullptr : result->release();
}

}  // namespace

sorvik_event_kind sorvik_event_get_kind(const sorvik_event* event) {
  static constexpr sorvik_event_kind kKinds[] = {
      SORVIK_EVENT_END,     SORVIK_EVENT_CARD,   SORVIK_EVENT_LISTING,
      SORVIK_EVENT_FILES,   SORVIK_EVENT_REPORT, SORVIK_EVENT_PICTURE,
      SORVIK_EVENT_SOURCES, SORVIK_EVENT_PARTS,  SORVIK_EVENT_JOIN_LISTS};
  static_assert(std::size(kKinds) == std::variant_size_v<sorvik_event::Result>);
  return event->isProblem ? SORVIK_EVENT_PROBLEM : kKinds[event->result.index()];
}

sorvik_status sorvik_event_status(const sorvik_event* event) { return event->outcome.status; }
sorvik_text sorvik_event_text(const sorvik_event* event) {
  return Sorvik::c::TextOf(event->outcome.text);
}
sorvik_text sorvik_event_path(const sorvik_event* event) {
  return Sorvik::c::TextOf(event->outcome.path);
}

sorvik_card* sorvik_event_take_card(sorvik_event* event) { return TakeResult<sorvik_card>(event); }
sorvik_listing* sorvik_event_take_listing(sorvik_event* event) {
  return TakeResult<sorvik_listing>(event);
}
sorvik_files* sorvik_event_take_files(sorvik_event* event) {
  return TakeResult<sorvik_files>(event);
}
sorvik_sources* sorvik_event_take_sources(sorvik_event* event) {
  return TakeResult<sorvik_sources>(event);
}
sorvik_parts* sorvik_event_take_parts(sorvik_event* event) {
  return TakeResult<sorvik_parts>(event);
}
sorvik_join_lists* sorvik_event_take_join_lists(sorvik_event* event) {
  return TakeResult<sorvik_join_lists>(event);
}
sorvik_report* sorvik_event_take_report(sorvik_event* event) {
  return TakeResult<sorvik_report>(event);
}
sorvik_picture* sorvik_event_take_picture(sorvik_event* event) {
  return TakeResult<sorvik_picture>(event);
}
void sorvik_event_free(sorvik_event* event) { delete event; }
