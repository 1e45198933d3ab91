// SPDX-License-Identifier: MIT
#include "foundation/platform/ShareThread.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <map>
#include <mutex>
#include <utility>

#include "foundation/platform/DetachedThread.h"

namespace Sorvik::platform {

struct ShareThread::State {
  struct Task {
    std::function<void()> call;
    std::shared_ptr<bool> done;
  };

  // The loop of the thread.
  void RunTasks(const std::string& share);

  std::mutex mutex;
  std::condition_variable changed;
  std::deque<Task> tasks;
  bool closing = false;
  bool blocked = false;  // the current call has timed out
};

namespace {

// The shares with an abandoned thread. Never destroyed: such a thread may outlive main().
struct BlockedShares {
  std::mutex mutex;
  std::map<std::string, int> threads;
};

BlockedShares& AllBlockedShares() {
  static BlockedShares& shares = *new BlockedShares;
  return shares;
}

void AddBlocked(const std::string& share, int change) {
  BlockedShares& shares = AllBlockedShares();
  const std::lock_guard lock(shares.mutex);
  if ((shares.threads[share] += change) == 0) shares.threads.erase(share);
}

bool IsBlocked(const std::string& share) {
  BlockedShares& shares = AllBlockedShares();
  const std::lock_guard lock(shares.mutex);
  return shares.threads.contains(share);
}

}  // namespace

void ShareThread::State::RunTasks(const std::string& share) {
  std::unique_lock lock(mutex);
  while (true) {
    changed.wait(lock, [this] { return !tasks.empty() || closing; });
    if (tasks.empty()) return;
    Task task = std::move(tasks.front());
    tasks.pop_front();
    lock.unlock();
    try {
      task.call();
    } catch (const std::exception&) {
      // Out of memory. The caller sees a call without a result.
    }
    task.call = nullptr;  // may close a file on the share, which can block, too
    lock.lock();
    *task.done = true;
    if (std::exchange(blocked, false)) AddBlocked(share, -1);
    changed.notify_all();
  }
}

ShareThread::~ShareThread() {
  if (!state_) return;
  const std::lock_guard lock(state_->mutex);
  state_->closing = true;
  state_->changed.notify_all();
}

bool ShareThread::Start() {
  state_ = std::make_shared<State>();
  const auto loop = [state = state_, share = share_] { state->RunTasks(share); };
  if (!StartDetachedThread(loop)) state_ = nullptr;
  return state_ != nullptr;
}

bool ShareThread::Run(std::function<void()> call, std::chrono::milliseconds timeout) {
  if (abandoned_) return false;
  if (IsBlocked(share_) || (!state_ && !Start())) {
    abandoned_ = true;
    return false;
  }
  const auto done = std::make_shared<bool>(false);
  std::unique_lock lock(state_->mutex);
  state_->tasks.push_back({std::move(call), done});
  state_->changed.notify_all();
  if (state_->changed.wait_for(lock, timeout, [&] { return *done; })) return true;
  abandoned_ = true;
  state_->blocked = true;
  AddBlocked(share_, 1);
  return false;
}

void ShareThread::Later(std::function<void()> call) {
  if (!state_) return;
  const std::lock_guard lock(state_->mutex);
  state_->tasks.push_back({std::move(call), std::make_shared<bool>()});
  state_->changed.notify_all();
}

}  // namespace Sorvik::platform
