// SPDX-License-Identifier: MIT
// A line that shows that long work goes on. Only on a terminal, and only once it takes time.
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

  // What is being done from now on; `total` 0 stands for an unknown amount.
  void Begin(std::string what, std::size_t total = 0);
  void Advance() { ++done_; }
  // Draws the line if it is due.
  void Tick();
  // Takes the line away, before other output.
  void Clear();

  // How long to wait until the next tick, in milliseconds; -1 where nothing is ever drawn.
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
