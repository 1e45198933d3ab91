// SPDX-License-Identifier: MIT
#include "foundation/platform/AccessTimes.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <thread>

namespace Sorvik::platform {
namespace {

using std::chrono::nanoseconds;

constexpr nanoseconds kSlow{300'000};
constexpr std::size_t kMinAccesses = 3;

struct Latest {
  std::array<nanoseconds, 5> times;
  std::size_t count = 0;  // of all accesses
};

thread_local Latest latest;

std::atomic<std::chrono::microseconds::rep> addedDelay{0};

}  // namespace

void ResetAccessTimes() noexcept { latest.count = 0; }

std::size_t CountAccesses() noexcept { return latest.count; }

bool AccessesAreSlow() noexcept {
  if (latest.count < kMinAccesses) return false;
  const std::size_t known = std::min(latest.count, latest.times.size());
  const auto slow =
      std::count_if(latest.times.begin(), latest.times.begin() + static_cast<std::ptrdiff_t>(known),
                    [](nanoseconds time) { return time > kSlow; });
  return static_cast<std::size_t>(slow) * 2 > known;
}

void SetAccessDelay(std::chrono::microseconds delay) noexcept { addedDelay = delay.count(); }

AccessTimer::AccessTimer() : start_(std::chrono::steady_clock::now()) {
  const auto delay = addedDelay.load(std::memory_order_relaxed);
  if (delay > 0) std::this_thread::sleep_for(std::chrono::microseconds(delay));
}

AccessTimer::~AccessTimer() {
  latest.times[latest.count++ % latest.times.size()] = std::chrono::steady_clock::now() - start_;
}

}  // namespace Sorvik::platform
