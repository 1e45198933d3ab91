// SPDX-License-Identifier: MIT
// A mount of a test's own, for machines that let tests mount; gone at the end.
#pragma once

#include <string>

namespace sorvik_test {

class RealMount {
 public:
  // An empty file system in memory.
  static RealMount Memory(const std::string& folder);
  // The folder or file `what` shown again at `place`.
  static RealMount Bind(const std::string& what, const std::string& place);
  // A new ext4 file system with `label` in the file `image`.
  static RealMount Image(const std::string& image, const std::string& label,
                         const std::string& folder);
  // A share of a network file system whose server never answers: whoever touches it waits until the
  // mount is gone.
  static RealMount DeadShare(const std::string& folder);
  RealMount(RealMount&& other) noexcept;
  ~RealMount();

  // Takes the mount away, which frees whoever waits for it.
  void End();

  // False if the machine didn't allow it.
  explicit operator bool() const noexcept { return !place_.empty(); }

 private:
  explicit RealMount(std::string place, int server = -1) noexcept
      : place_(std::move(place)), server_(server) {}

  std::string place_;
  int server_;
};

}  // namespace sorvik_test
