// SPDX-License-Identifier: MIT
#include "frame/AbortWatchdog.h"

#include <algorithm>
#include <utility>

#include "SorvikProvider/frame/ProviderRequest.h"

namespace Sorvik {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// The time that a run has to notice an abort. The message is due 100 ms after the abort.
constexpr milliseconds kGraceTime{40};
// Without a descriptor to wait for, the thread looks for aborted requests this often.
constexpr milliseconds kPollTime{20};
constexpr int kForever = -1;

}  // namespace

AbortRecord& AbortRecord::Of(const ProviderRequest& request) noexcept { return *request.record_; }

void AbortRecord::SetAccepted(bool accepted) noexcept {
  state_ = accepted ? State::kAccepted : State::kNew;
}

void AbortRecord::Abort() noexcept {
  if (state_ != State::kAccepted || aborted_.exchange(true)) return;
  abortTime_ = Clock::now();
  AbortWatchdog::Get().Add(*this);
}

bool AbortRecord::Claim(State answered) noexcept {
  State expected = state_;
  while (expected == State::kNew || expected == State::kAccepted) {
    if (state_.compare_exchange_weak(expected, answered)) return true;
  }
  return false;
}

bool AbortRecord::ClaimForRun() noexcept { return Claim(State::kAnsweredByRun); }

void AbortRecord::Answer() {
  const std::lock_guard lock(mutex_);
  if (!Claim(State::kAnsweredByWatchdog)) return;
  // A failure to post must not keep the worker's place occupied.
  tarnwick::threads::RunGuarded([this] { request_.PostAborted(); });
  if (worker_ != nullptr) worker_->MarkStalled();
}

bool AbortRecord::IfUnanswered(const std::function<void()>& post) {
  const std::lock_guard lock(mutex_);
  if (AnsweredByWatchdog()) return false;
  post();
  return true;
}

AbortRecord::Run::Run(AbortRecord& record) : record_(record) {
  const std::lock_guard lock(record_.mutex_);
  record_.worker_ = tarnwick::threads::WorkerPool::Worker::Current();
}

AbortRecord::Run::~Run() {
  const std::lock_guard lock(record_.mutex_);
  record_.worker_ = nullptr;
}

AbortWatchdog& AbortWatchdog::Get() {
  static auto& watchdog = *new AbortWatchdog;
  return watchdog;
}

void AbortWatchdog::Start() {
  stopping_ = false;
  thread_ = std::thread([this] { Watch(); });
}

void AbortWatchdog::Stop() {
  stopping_ = true;
  wake_.Set();
  thread_.join();
}

void AbortWatchdog::Add(AbortRecord& record) noexcept {
  record.request_.AddRef();
  AbortRecord* newest = added_;
  do {
    record.next_ = newest;
  } while (!added_.compare_exchange_weak(newest, &record));
  wake_.Set();
}

void AbortWatchdog::Watch() {
  while (!stopping_) {
    wake_.Wait(WaitMilliseconds());
    wake_.Clear();
    TakeAdded();
    while (FirstIsDue()) AnswerFirst();
  }
  while (first_ != nullptr) AnswerFirst();
}

int AbortWatchdog::WaitMilliseconds() const {
  if (first_ == nullptr) {
    return wake_.Descriptor() < 0 ? static_cast<int>(kPollTime.count()) : kForever;
  }
  const auto left = std::chrono::ceil<milliseconds>(first_->abortTime_ + kGraceTime - Clock::now());
  return static_cast<int>(std::clamp(left, milliseconds(0), kGraceTime).count());
}

bool AbortWatchdog::FirstIsDue() const {
  return first_ != nullptr && first_->abortTime_ + kGraceTime <= Clock::now();
}

// Appends the added records, oldest first.
void AbortWatchdog::TakeAdded() {
  AbortRecord* newestFirst = added_.exchange(nullptr);
  AbortRecord* const newest = newestFirst;
  AbortRecord* oldestFirst = nullptr;
  while (newestFirst != nullptr) {
    AbortRecord* const record = std::exchange(newestFirst, newestFirst->next_);
    record->next_ = std::exchange(oldestFirst, record);
  }
  if (oldestFirst == nullptr) return;
  (first_ == nullptr ? first_ : last_->next_) = oldestFirst;
  last_ = newest;
}

void AbortWatchdog::AnswerFirst() {
  AbortRecord& record = *std::exchange(first_, first_->next_);
  tarnwick::threads::RunGuarded([&record] { record.Answer(); });
  record.request_.Release();  // may destroy the record
}

}  // namespace Sorvik
