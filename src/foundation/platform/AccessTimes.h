// SPDX-License-Identifier: MIT
// How long the latest accesses of a thread to files and folders took. Distinguishes slow storage,
// such as a network share, from a disk whose answers are cached.
#pragma once

#include <chrono>
#include <cstddef>

namespace Sorvik::platform {

// Clears the times of this thread, at the start of an operation.
void ResetAccessTimes() noexcept;

// The number of accesses of this thread since then. For tests.
std::size_t CountAccesses() noexcept;

// True if there were at least three accesses and the latest ones took more than 300 microseconds
// each (median).
bool AccessesAreSlow() noexcept;

// Makes every access of the process take longer, as on a slow share. For tests and benchmarks.
void SetAccessDelay(std::chrono::microseconds delay) noexcept;

// Measures one access of this thread, from construction to destruction. Not nested. No system call.
class AccessTimer {
 public:
  AccessTimer();
  ~AccessTimer();
  AccessTimer(const AccessTimer&) = delete;
  AccessTimer& operator=(const AccessTimer&) = delete;

 private:
  std::chrono::steady_clock::time_point start_;
};

}  // namespace Sorvik::platform
