// SPDX-License-Identifier: MIT
// Answers aborted requests whose run doesn't end, such as one that is stuck in the kernel.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <thread>

#include "foundation/platform/WakeEvent.h"
#include "foundation/tarnwick/WorkerPool.h"

namespace Sorvik {

class ProviderRequest;

// What a request shares with the watchdog: who answers it, and where it runs.
class AbortRecord {
 public:
  explicit AbortRecord(ProviderRequest& request) noexcept : request_(request) {}
  AbortRecord(const AbortRecord&) = delete;
  AbortRecord& operator=(const AbortRecord&) = delete;

  static AbortRecord& Of(const ProviderRequest& request) noexcept;

  // The executor has the request, or has refused it: only an accepted request is answered by the
  // watchdog. Before the request is queued.
  void SetAccepted(bool accepted) noexcept;
  // Passes the request to the watchdog, once, if it is accepted and unanswered. Any thread; doesn't
  // block.
  void Abort() noexcept;

  // Reserves the one answer for the run. Returns false if the watchdog has answered.
  bool ClaimForRun() noexcept;
  bool AnsweredByWatchdog() const noexcept { return state_ == State::kAnsweredByWatchdog; }

  // Calls `post`, which posts a message before the answer, unless the watchdog has answered. Then
  // it returns false.
  bool IfUnanswered(const std::function<void()>& post);

  // The time of the run on its worker.
  class Run {
   public:
    explicit Run(AbortRecord& record);
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

   private:
    AbortRecord& record_;
  };

 private:
  friend class AbortWatchdog;

  enum class State { kNew, kAccepted, kAnsweredByRun, kAnsweredByWatchdog };

  // Posts the message of an aborted request and sets the worker of the run aside, unless the run
  // has answered.
  void Answer();
  bool Claim(State answered) noexcept;

  ProviderRequest& request_;
  std::atomic<State> state_{State::kNew};
  std::atomic<bool> aborted_{false};
  std::chrono::steady_clock::time_point abortTime_;  // set before the record is passed on
  AbortRecord* next_ = nullptr;                      // in a list of the watchdog

  std::mutex mutex_;  // of the run and the watchdog
  tarnwick::threads::WorkerPool::Worker* worker_ = nullptr;
};

// One thread, from ProviderHost::Initialize to the last Shutdown.
class AbortWatchdog {
 public:
  // Never destroyed: a request may be aborted while the process exits.
  static AbortWatchdog& Get();

  // Throws std::system_error if there is no thread left. Both on the main thread.
  void Start();
  void Stop();
  // Keeps the request alive until it is answered. Any thread; doesn't block.
  void Add(AbortRecord& record) noexcept;

 private:
  void Watch();
  int WaitMilliseconds() const;
  bool FirstIsDue() const;
  void TakeAdded();
  void AnswerFirst();

  std::atomic<AbortRecord*> added_{nullptr};  // newest first; pushed to without a lock
  AbortRecord* first_ = nullptr;              // oldest first; of the thread
  AbortRecord* last_ = nullptr;
  std::atomic<bool> stopping_{false};
  platform::WakeEvent wake_;
  std::thread thread_;
};

}  // namespace Sorvik
