// SPDX-License-Identifier: MIT
// A thread for calls into a network share, which block for as long as its server doesn't answer. A
// thread whose call doesn't return in time is abandoned; it ends when the call returns.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace Sorvik::platform {

// Used by one thread at a time.
class ShareThread {
 public:
  // `share` identifies the share within the process. The thread is created at the first call.
  explicit ShareThread(std::string share) : share_(std::move(share)) {}
  ~ShareThread();
  ShareThread(const ShareThread&) = delete;
  ShareThread& operator=(const ShareThread&) = delete;

  // Returns the result of `call`, or nullopt if it takes longer than `timeout`, if an earlier call
  // of this object did, or if a call of any object to the same share still blocks: a process has
  // at most one abandoned thread for each share and call that ran at the same time. `call` owns
  // what it uses, because it may outlive this function.
  template <class Result>
  std::optional<Result> Ask(std::function<Result()> call, std::chrono::milliseconds timeout) {
    const auto result = std::make_shared<std::optional<Result>>();
    const auto run = [result, call = std::move(call)] { result->emplace(call()); };
    if (!Run(run, timeout)) return std::nullopt;
    return std::move(*result);
  }

  // Runs `call` when earlier calls have returned, without waiting for it. Does nothing if no call
  // has been made.
  void Later(std::function<void()> call);

  // True if a call has timed out.
  bool IsAbandoned() const noexcept { return abandoned_; }

 private:
  struct State;

  bool Run(std::function<void()> call, std::chrono::milliseconds timeout);
  bool Start();

  std::string share_;
  std::shared_ptr<State> state_;
  bool abandoned_ = false;
};

}  // namespace Sorvik::platform
