// SPDX-License-Identifier: MIT
// A descriptor that one thread makes readable to wake another.
#pragma once

namespace Sorvik::platform {

class WakeEvent {
 public:
  WakeEvent() noexcept;
  ~WakeEvent();
  WakeEvent(const WakeEvent&) = delete;
  WakeEvent& operator=(const WakeEvent&) = delete;

  // -1 if the system had none left.
  int Descriptor() const noexcept { return descriptor_; }
  void Set() noexcept;
  void Clear() noexcept;
  // Waits until it is set, at most `milliseconds` (-1: without end); true if it is.
  bool Wait(int milliseconds) const noexcept;

 private:
  int descriptor_;
};

}  // namespace Sorvik::platform
