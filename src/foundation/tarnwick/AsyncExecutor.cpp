// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/AsyncExecutor.h"

#include <boost/smart_ptr/make_shared.hpp>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <utility>

#include "foundation/tarnwick/WorkerPool.h"

namespace tarnwick::threads {
namespace {

// Never destroyed: workers may still use it while the process exits.
FailureHook& Hook() {
  static FailureHook& hook = *new FailureHook;
  return hook;
}

// Counts accepted functions that haven't finished.
class PendingCount {
 public:
  // Returns false after Close.
  bool Add() {
    const std::lock_guard lock(mutex_);
    if (!open_) return false;
    ++count_;
    return true;
  }
  void Remove() {
    const std::lock_guard lock(mutex_);
    if (--count_ == 0) zero_.notify_all();
  }
  void Close() {
    const std::lock_guard lock(mutex_);
    open_ = false;
  }
  void WaitForZero() {
    std::unique_lock lock(mutex_);
    zero_.wait(lock, [this] { return count_ == 0; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable zero_;
  std::size_t count_ = 0;
  bool open_ = true;
};

// Passes functions to the base, or queues them while `width` of them are running.
class SubExecutor final : public AsyncExecutor {
 public:
  SubExecutor(boost::shared_ptr<AsyncExecutor> base, int width)
      : base_(std::move(base)), state_(boost::make_shared<State>(width)) {}
  ~SubExecutor() override { WaitForAccepted(); }

  bool Post(boost::function<void()> function) override {
    if (!state_->pending.Add()) return false;
    if (!state_->StartOrQueue(function)) return true;
    if (Start(base_, state_, std::move(function))) return true;
    state_->pending.Remove();
    return false;
  }
  void StopAccepting() override { state_->pending.Close(); }
  void WaitForAccepted() override { state_->pending.WaitForZero(); }

 private:
  struct State {
    explicit State(int limit) : width(limit) {}
    // Returns true if `function` may start now; otherwise moves it to the queue.
    bool StartOrQueue(boost::function<void()>& function) {
      if (width < 1) return true;
      const std::lock_guard lock(mutex);
      if (running < width) {
        ++running;
        return true;
      }
      waiting.push_back(std::move(function));
      return false;
    }
    // The next queued function after one has finished; empty if there is none.
    boost::function<void()> Next() {
      if (width < 1) return {};
      const std::lock_guard lock(mutex);
      if (waiting.empty()) {
        --running;
        return {};
      }
      boost::function<void()> next = std::move(waiting.front());
      waiting.pop_front();
      return next;
    }

    PendingCount pending;
    const int width;
    std::mutex mutex;
    int running = 0;
    std::deque<boost::function<void()>> waiting;
  };

  static bool Start(const boost::shared_ptr<AsyncExecutor>& base,
                    const boost::shared_ptr<State>& state, boost::function<void()> function) {
    return base->Post([state, work = std::move(function)]() mutable {
      while (work) {
        RunGuarded(std::move(work));
        work = state->Next();
        state->pending.Remove();
      }
    });
  }

  boost::shared_ptr<AsyncExecutor> base_;
  boost::shared_ptr<State> state_;
};

}  // namespace

AsyncExecutor::~AsyncExecutor() = default;

void RunGuarded(boost::function<void()> function) noexcept {
  try {
    function();
  } catch (...) {
    if (Hook()) {
      try {
        Hook()(std::current_exception());
      } catch (...) {
        // There is nowhere to report that the hook itself failed.
      }
    }
  }
}

boost::shared_ptr<AsyncExecutor> CreateIOBoundExecutor() {
  return boost::make_shared<WorkerPool>();
}

boost::shared_ptr<AsyncExecutor> CreateSubExecutor(boost::shared_ptr<AsyncExecutor> base,
                                                   int width) {
  return boost::make_shared<SubExecutor>(std::move(base), width);
}

void SetFailureHook(FailureHook hook) { Hook() = std::move(hook); }

}  // namespace tarnwick::threads
