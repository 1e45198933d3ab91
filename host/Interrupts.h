// SPDX-License-Identifier: MIT
// Ctrl-C. A thread of its own waits for it, so that the program ends in time whatever the UI thread
// and the workers are stuck in.
#pragma once

#include <atomic>
#include <thread>

namespace host {

// Make it before any other thread, since it blocks SIGINT for all threads to come.
class Interrupts {
 public:
  Interrupts();
  ~Interrupts();
  Interrupts(const Interrupts&) = delete;
  Interrupts& operator=(const Interrupts&) = delete;

  // Set by the first Ctrl-C. The process ends with 130 soon after it, at once on a second one.
  const std::atomic<bool>& Raised() const noexcept { return raised_; }
  // Readable once Ctrl-C has come.
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
