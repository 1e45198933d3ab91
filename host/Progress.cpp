// SPDX-License-Identifier: MIT
#include "Progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace host {
namespace {

constexpr auto kDelay = std::chrono::milliseconds(500);

}  // namespace

Progress::Progress() : shown_(isatty(STDERR_FILENO) == 1 && isatty(STDOUT_FILENO) == 1) {}

Progress::~Progress() { Clear(); }

void Progress::Begin(std::string what, std::size_t total) {
  what_ = std::move(what);
  done_ = 0;
  total_ = total;
  begun_ = std::chrono::steady_clock::now();
}

void Progress::Tick() {
  const auto passed = std::chrono::steady_clock::now() - begun_;
  if (!shown_ || passed < kDelay) return;
  if (total_ != 0) {
    std::fprintf(stderr, "\r%s %zu of %zu\x1b[K", what_.c_str(), done_, total_);
  } else {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(passed).count();
    std::fprintf(stderr, "\r%s %lld s\x1b[K", what_.c_str(), static_cast<long long>(seconds));
  }
  std::fflush(stderr);
  drawn_ = true;
}

void Progress::Clear() {
  if (std::exchange(drawn_, false)) std::fputs("\r\x1b[K", stderr);
}

}  // namespace host
