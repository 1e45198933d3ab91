// SPDX-License-Identifier: MIT
// A file descriptor that one thread makes readable to wake another (eventfd). Any thread.
#pragma once

namespace Sorvik::platform {

class WakeEvent {
 public:
  WakeEvent() noexcept;
  ~WakeEvent();
  WakeEvent(const WakeEvent&) = delete;
  WakeEvent& operator=(const WakeEvent&) = delete;

  // -1 if the process has no descriptor left.
  int Descriptor() const noexcept { return descriptor_; }
  // A new descriptor of the same event, which the caller closes. -1 if there is none left.
  int DuplicateDescriptor() const noexcept;
  void Set() noexcept;
  void Clear() noexcept;
  // Waits at most `milliseconds` (-1: forever). Returns true if the event is set.
  bool Wait(int milliseconds) const noexcept;

 private:
  int descriptor_;
};

}  // namespace Sorvik::platform
