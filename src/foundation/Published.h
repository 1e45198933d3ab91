// SPDX-License-Identifier: MIT
// Settings that are read often, on any thread, and changed rarely.
#pragma once

#include <atomic>
#include <deque>
#include <mutex>
#include <utility>

namespace Sorvik::foundation {

// A value that is read without a lock. Update publishes a changed copy; versions that were replaced
// stay valid until this object is destroyed, so that a reader may keep its reference. Each update
// thus costs the memory of one T.
template <class T>
class Published {
 public:
  explicit Published(T initial = T())
      : versions_{std::move(initial)}, current_(&versions_.back()) {}
  Published(const Published&) = delete;
  Published& operator=(const Published&) = delete;

  // The current version. Any thread; one atomic load.
  const T& Get() const noexcept { return *current_.load(std::memory_order_acquire); }

  // Applies `change` to a copy of the current version and publishes it. Any thread; updates exclude
  // each other, but never block Get.
  template <class Change>
  void Update(Change change) {
    const std::lock_guard lock(mutex_);
    T next = versions_.back();
    change(next);
    current_.store(&versions_.emplace_back(std::move(next)), std::memory_order_release);
  }

 private:
  std::mutex mutex_;
  std::deque<T> versions_;  // elements never move; only the last one is current
  std::atomic<const T*> current_;
};

}  // namespace Sorvik::foundation
