// SPDX-License-Identifier: MIT
#include "Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "Output.h"
#include "Text.h"

namespace host {
namespace {

constexpr auto kDelay = std::chrono::milliseconds(500);
constexpr auto kSlow = std::chrono::seconds(2);

}  // namespace

Progress::Progress() : shown_(isatty(STDERR_FILENO) == 1 && isatty(STDOUT_FILENO) == 1) {}

Progress::~Progress() { Clear(); }

void Progress::Begin(std::string what, std::size_t total) {
  what_ = std::move(what);
  done_ = 0;
  total_ = total;
  items_.clear();
  begun_ = std::chrono::steady_clock::now();
}

void Progress::AddItem(std::string name) {
  if (items_.empty()) itemBegun_ = Clock::now();
  items_.push_back(std::move(name));
}

void Progress::FinishItem(const std::string& name) {
  ++done_;
  const auto item = std::find(items_.begin(), items_.end(), name);
  if (item == items_.end()) return;
  if (item == items_.begin()) itemBegun_ = Clock::now();
  items_.erase(item);
}

std::string Progress::Line(Clock::time_point now, std::size_t columns) const {
  const auto seconds = [now](Clock::time_point since) {
    return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(now - since).count()) +
           " s";
  };
  std::string line = what_;
  if (total_ != 0) {
    line += " " + std::to_string(done_) + " of " + std::to_string(total_);
  } else {
    line += " " + seconds(begun_);
  }
  if (!items_.empty()) {
    const std::string name = EscapedForTerminal(items_.front());
    line += now - itemBegun_ < kSlow ? ": " + name
                                     : ": waiting for " + name + " (" + seconds(itemBegun_) + ")";
  }
  return columns == 0 ? line : ShortenedMiddle(line, columns);
}

void Progress::Tick() {
  const auto now = Clock::now();
  if (!shown_ || now - begun_ < kDelay) return;
  // The last cell stays empty: some terminals break the line after it.
  const int columns = TerminalColumns();
  const std::string line = Line(now, columns > 1 ? static_cast<std::size_t>(columns - 1) : 0);
  std::fprintf(stderr, "\r%s\x1b[K", line.c_str());
  std::fflush(stderr);
  drawn_ = true;
}

void Progress::Clear() {
  if (std::exchange(drawn_, false)) std::fputs("\r\x1b[K", stderr);
}

}  // namespace host
