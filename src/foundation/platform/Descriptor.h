// SPDX-License-Identifier: MIT
// An open file descriptor that is closed with its object.
#pragma once

#include <unistd.h>

namespace Sorvik::platform {

class Descriptor {
 public:
  explicit Descriptor(int number) noexcept : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Number() const noexcept { return number_; }

 private:
  int number_;
};

}  // namespace Sorvik::platform
