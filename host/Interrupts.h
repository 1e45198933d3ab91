// SPDX-License-Identifier: MIT
// Handling of Ctrl-C. A dedicated thread waits for SIGINT, so that the program ends in time even if
// the UI thread or a worker is blocked.
#pragma once

#include <atomic>
#include <thread>

namespace host {

// Construct it before any other thread: it blocks SIGINT, and threads inherit the signal mask.
class Interrupts {
 public:
  Interrupts();
  ~Interrupts();
  Interrupts(const Interrupts&) = delete;
  Interrupts& operator=(const Interrupts&) = delete;

  // Set by the first Ctrl-C. The process exits with 130 after a grace period, or immediately on a
  // second Ctrl-C.
  const std::atomic<bool>& Raised() const noexcept { return raised_; }
  // A descriptor that becomes readable after Ctrl-C.
  int Descriptor() const noexcept { return raisedEvent_; }

 private:
  void Watch();

  std::atomic<bool> raised_{false};
  int signals_;
  int raisedEvent_;
  int stopEvent_;
  std::thread watcher_;
};

}  // namespace host
