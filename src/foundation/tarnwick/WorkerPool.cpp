// SPDX-License-Identifier: MIT
#include "foundation/tarnwick/WorkerPool.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace tarnwick::threads {
namespace {

constexpr unsigned kMinThreads = 4;
constexpr unsigned kMaxThreads = 16;

thread_local WorkerPool::Worker* currentWorker = nullptr;

}  // namespace

WorkerPool::Worker* WorkerPool::Worker::Current() noexcept { return currentWorker; }

void WorkerPool::Worker::MarkStalled() { pool_.Stall(*this); }

WorkerPool::WorkerPool()
    : width_(std::clamp(4 * std::thread::hardware_concurrency(), kMinThreads, kMaxThreads)) {
  const std::lock_guard lock(mutex_);
  AddWorkers();
}

WorkerPool::~WorkerPool() {
  WaitForAccepted();
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  work_.notify_all();
  for (Worker& worker : workers_) worker.thread_.join();
}

bool WorkerPool::Post(boost::function<void()> function) {
  {
    const std::lock_guard lock(mutex_);
    if (!accepting_) return false;
    queue_.push_back(std::move(function));
  }
  work_.notify_one();
  return true;
}

void WorkerPool::StopAccepting() {
  const std::lock_guard lock(mutex_);
  accepting_ = false;
}

void WorkerPool::WaitForAccepted() {
  std::unique_lock lock(mutex_);
  progress_.wait(lock, [this] { return Done(); });
}

bool WorkerPool::WaitUnlessStalled(std::chrono::milliseconds timeout) {
  std::unique_lock lock(mutex_);
  if (progress_.wait_for(lock, timeout, [this] { return Done(); })) return true;
  progress_.wait(lock, [this] { return Done() || OnlyStalledRemain(); });
  return Done();
}

void WorkerPool::RequireWidth(std::size_t width) {
  const std::lock_guard lock(mutex_);
  width_ = std::max(width_, width);
  if (!abandoned_ && !ending_) AddWorkers();
}

std::size_t WorkerPool::StalledCount() const {
  const std::lock_guard lock(mutex_);
  return stalled_;
}

void WorkerPool::Abandon() {
  {
    const std::lock_guard lock(mutex_);
    accepting_ = false;
    ending_ = true;
    abandoned_ = true;
    for (Worker& worker : workers_) worker.thread_.detach();
  }
  work_.notify_all();
}

std::size_t WorkerPool::WantedWorkers() const noexcept {
  return width_ + std::min(stalled_, kMaxReplaced);
}

bool WorkerPool::OnlyStalledRemain() const noexcept {
  return running_ == stalled_ && (queue_.empty() || stalled_ >= active_);
}

// With the lock held. Fewer threads than wanted suffice, but the first one is needed.
void WorkerPool::AddWorkers() {
  JoinLeft();
  while (active_ < WantedWorkers()) {
    Worker& worker = workers_.emplace_back(Worker(*this));
    try {
      worker.thread_ = std::thread([this, &worker] { Work(worker); });
    } catch (const std::system_error&) {
      workers_.pop_back();
      if (active_ == 0) throw;
      return;
    }
    ++active_;
  }
}

// With the lock held: a thread that has left no longer takes it.
void WorkerPool::JoinLeft() {
  for (auto worker = workers_.begin(); worker != workers_.end();) {
    if (!worker->left_) {
      ++worker;
      continue;
    }
    worker->thread_.join();
    worker = workers_.erase(worker);
  }
}

void WorkerPool::Work(Worker& worker) {
  currentWorker = &worker;
  std::unique_lock lock(mutex_);
  while (active_ <= WantedWorkers()) {
    work_.wait(lock, [this] { return !queue_.empty() || ending_; });
    if (queue_.empty() || abandoned_) break;
    boost::function<void()> function = std::move(queue_.front());
    queue_.pop_front();
    ++running_;
    lock.unlock();
    RunGuarded(std::move(function));
    lock.lock();
    --running_;
    if (std::exchange(worker.stalled_, false)) --stalled_;
    progress_.notify_all();
  }
  --active_;
  worker.left_ = true;
}

void WorkerPool::Stall(Worker& worker) {
  const std::lock_guard lock(mutex_);
  if (std::exchange(worker.stalled_, true)) return;
  ++stalled_;
  if (!abandoned_) AddWorkers();
  progress_.notify_all();
}

}  // namespace tarnwick::threads
