// SPDX-License-Identifier: MIT
// A progress line for long operations. Shown on terminals only, after a short delay.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace host {

class Progress {
 public:
  Progress();
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Starts an operation; a `total` of 0 means unknown.
  void Begin(std::string what, std::size_t total = 0);
  void Advance() { ++done_; }
  // Draws the line if the delay has passed.
  void Tick();
  // Removes the line. Call it before other output.
  void Clear();

  // Milliseconds until the next tick; -1 if nothing is ever drawn.
  int TickMilliseconds() const noexcept { return shown_ ? 250 : -1; }

 private:
  const bool shown_;
  bool drawn_ = false;
  std::string what_;
  std::size_t done_ = 0;
  std::size_t total_ = 0;
  std::chrono::steady_clock::time_point begun_;
};

}  // namespace host
