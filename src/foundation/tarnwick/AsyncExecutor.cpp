// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/AsyncExecutor.h"

#include <algorithm>
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace tarnwick::threads {
namespace {

constexpr unsigned kMinThreads = 4;
constexpr unsigned kMaxThreads = 16;

FailureHook& Hook() {
  static FailureHook hook;
  return hook;
}

// Runs one function and gives what it holds back, whatever it throws: an exception that left a
// worker would end the process.
void RunGuarded(boost::function<void()> function) noexcept {
  try {
    function();
  } catch (...) {
    if (Hook()) {
      try {
        Hook()(std::current_exception());
      } catch (...) {
        // A hook that fails as well has nobody left to tell.
      }
    }
  }
}

// Counts accepted work that hasn't run to its end.
class Gate {
 public:
  bool Enter() {
    const std::lock_guard lock(mutex_);
    if (!open_) return false;
    ++inside_;
    return true;
  }
  void Leave() {
    const std::lock_guard lock(mutex_);
    if (--inside_ == 0) empty_.notify_all();
  }
  void Close() {
    const std::lock_guard lock(mutex_);
    open_ = false;
  }
  void WaitEmpty() {
    std::unique_lock lock(mutex_);
    empty_.wait(lock, [this] { return inside_ == 0; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable empty_;
  std::size_t inside_ = 0;
  bool open_ = true;
};

class PoolExecutor final : public AsyncExecutor {
 public:
  // The threads are our own: a pool that makes them itself never comes back if one can't be had.
  explicit PoolExecutor(unsigned threads) : pool_(0) {
    threads_.reserve(threads);
    try {
      while (threads_.size() < threads) threads_.emplace_back([this] { pool_.attach(); });
    } catch (const std::system_error&) {
      // Where threads are short, fewer do. Without any, nothing would ever run.
      if (threads_.empty()) throw;
    }
  }
  ~PoolExecutor() override {
    gate_.WaitEmpty();
    pool_.stop();
    for (std::thread& thread : threads_) thread.join();
  }

  bool Post(boost::function<void()> function) override {
    if (!gate_.Enter()) return false;
    try {
      boost::asio::post(pool_, [this, work = std::move(function)]() mutable {
        RunGuarded(std::move(work));
        gate_.Leave();
      });
    } catch (...) {
      gate_.Leave();
      throw;
    }
    return true;
  }
  void StopAccepting() override { gate_.Close(); }
  void WaitForAccepted() override { gate_.WaitEmpty(); }

 private:
  Gate gate_;
  boost::asio::thread_pool pool_;
  std::vector<std::thread> threads_;
};

// Work goes straight through to the base, or waits here while `width` pieces are running.
class SubExecutor final : public AsyncExecutor {
 public:
  SubExecutor(boost::shared_ptr<AsyncExecutor> base, int width)
      : base_(std::move(base)), state_(boost::make_shared<State>(width)) {}
  ~SubExecutor() override { WaitForAccepted(); }

  bool Post(boost::function<void()> function) override {
    if (!state_->gate.Enter()) return false;
    if (!state_->Admit(function)) return true;  // waits for a running piece to end
    if (Start(base_, state_, std::move(function))) return true;
    state_->gate.Leave();
    return false;
  }
  void StopAccepting() override { state_->gate.Close(); }
  void WaitForAccepted() override { state_->gate.WaitEmpty(); }

 private:
  struct State {
    explicit State(int limit) : width(limit) {}
    // True if `function` may start now; otherwise it is kept.
    bool Admit(boost::function<void()>& function) {
      if (width < 1) return true;
      const std::lock_guard lock(mutex);
      if (running < width) {
        ++running;
        return true;
      }
      waiting.push_back(std::move(function));
      return false;
    }
    // What starts in the place of a piece that ended; empty if nothing waits.
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

    Gate gate;
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
        state->gate.Leave();
      }
    });
  }

  boost::shared_ptr<AsyncExecutor> base_;
  boost::shared_ptr<State> state_;
};

}  // namespace

AsyncExecutor::~AsyncExecutor() = default;

boost::shared_ptr<AsyncExecutor> CreateIOBoundExecutor() {
  const unsigned threads =
      std::clamp(4 * std::thread::hardware_concurrency(), kMinThreads, kMaxThreads);
  return boost::make_shared<PoolExecutor>(threads);
}

boost::shared_ptr<AsyncExecutor> CreateSubExecutor(boost::shared_ptr<AsyncExecutor> base,
                                                   int width) {
  return boost::make_shared<SubExecutor>(std::move(base), width);
}

void SetFailureHook(FailureHook hook) { Hook() = std::move(hook); }

}  // namespace tarnwick::threads
