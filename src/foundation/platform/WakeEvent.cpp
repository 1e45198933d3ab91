// SPDX-License-Identifier: MIT
#include "foundation/platform/WakeEvent.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

namespace Sorvik::platform {

WakeEvent::WakeEvent() noexcept : descriptor_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

WakeEvent::~WakeEvent() {
  if (descriptor_ >= 0) close(descriptor_);
}

int WakeEvent::DuplicateDescriptor() const noexcept {
  return fcntl(descriptor_, F_DUPFD_CLOEXEC, 0);
}

void WakeEvent::Set() noexcept {
  const std::uint64_t one = 1;
  // Fails only if the counter is at its maximum, and then the descriptor is already readable.
  [[maybe_unused]] const auto written = write(descriptor_, &one, sizeof(one));
}

void WakeEvent::Clear() noexcept {
  std::uint64_t count = 0;
  [[maybe_unused]] const auto taken = read(descriptor_, &count, sizeof(count));
}

bool WakeEvent::Wait(int milliseconds) const noexcept {
  pollfd waiting{descriptor_, POLLIN, 0};
  return poll(&waiting, 1, milliseconds) > 0;
}

}  // namespace Sorvik::platform
