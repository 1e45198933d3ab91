// SPDX-License-Identifier: MIT
// A progress line for long operations. Shown on terminals only, after a short delay.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
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
  // Names an item of the operation that isn't finished. The first of them is taken to be in work.
  void AddItem(std::string name);
  // The item has been finished.
  void FinishItem(const std::string& name);
  // Draws the line if the delay has passed.
  void Tick();
  // Returns the line: what is done, the count, the item in work, and for how long it has been
  // waited for if that takes seconds. At most `columns` cells; 0 means no limit.
  using Clock = std::chrono::steady_clock;
  std::string Line(Clock::time_point now, std::size_t columns) const;
  // Removes the line. Call it before other output.
  void Clear();

  // Milliseconds until the next tick; -1 if nothing is ever drawn.
  int TickMilliseconds() const noexcept { return shown_ ? 250 : -1; }

 private:
  const bool shown_;
  bool drawn_ = false;
  std::string what_;
  std::deque<std::string> items_;
  std::chrono::steady_clock::time_point itemBegun_;
  std::size_t done_ = 0;
  std::size_t total_ = 0;
  std::chrono::steady_clock::time_point begun_;
};

}  // namespace host
