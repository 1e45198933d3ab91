// SPDX-License-Identifier: MIT
// The threads of CreateIOBoundExecutor. A worker whose function is stuck can be set aside; another
// thread then takes its place.
#pragma once

#include <boost/function.hpp>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <list>
#include <mutex>
#include <thread>

#include "SorvikProvider/foundation/AsyncExecutor.h"

namespace tarnwick::threads {

// Runs one function and destroys it. Its exceptions go to the failure hook: one that leaves a
// worker would terminate the process.
void RunGuarded(boost::function<void()> function) noexcept;

class WorkerPool final : public AsyncExecutor {
 public:
  // At most this many stalled workers are replaced. With more of them, functions wait for a worker.
  static constexpr std::size_t kMaxReplaced = 64;

  // One of the threads.
  class Worker {
   public:
    // The worker that is the calling thread, or nullptr.
    static Worker* Current() noexcept;
    // Sets the worker aside until its current function returns. Any thread; only while that
    // function can't return.
    void MarkStalled();

   private:
    friend class WorkerPool;
    explicit Worker(WorkerPool& pool) : pool_(pool) {}

    WorkerPool& pool_;
    std::thread thread_;
    bool stalled_ = false;
    bool left_ = false;
  };

  // 4 to 16 threads, sized for blocking I/O. Throws std::system_error if none can be created.
  WorkerPool();
  // Waits for all accepted functions.
  ~WorkerPool() override;
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  bool Post(boost::function<void()> function) override;
  void StopAccepting() override;
  void WaitForAccepted() override;

  // Like WaitForAccepted, but returns false if only stalled workers, and functions for which there
  // is no other worker, remain after `timeout`.
  bool WaitUnlessStalled(std::chrono::milliseconds timeout);
  // Adds threads until `width` workers aren't stalled, for callers that run as many functions at
  // once. Fewer if the system has no more.
  void RequireWidth(std::size_t width);
  // The number of workers that are set aside or wait for it.
  std::size_t StalledCount() const;
  // Ends the threads after their current function; queued functions are never run. The pool must
  // then live as long as the process, since stuck threads still refer to it.
  void Abandon();

 private:
  std::size_t WantedWorkers() const noexcept;
  bool Done() const noexcept { return queue_.empty() && running_ == 0; }
  bool OnlyStalledRemain() const noexcept;
  void AddWorkers();
  void JoinLeft();
  void Work(Worker& worker);
  void Stall(Worker& worker);

  mutable std::mutex mutex_;
  std::condition_variable work_;      // a function was queued, or the workers must end
  std::condition_variable progress_;  // a function has returned, or a worker has stalled
  std::deque<boost::function<void()>> queue_;
  std::list<Worker> workers_;  // those that have left included, until they are joined
  std::size_t width_;          // the number of workers that aren't stalled
  std::size_t active_ = 0;     // threads that haven't left
  std::size_t running_ = 0;    // functions
  std::size_t stalled_ = 0;
  bool accepting_ = true;
  bool ending_ = false;
  bool abandoned_ = false;
};

}  // namespace tarnwick::threads
