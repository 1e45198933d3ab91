// SPDX-License-Identifier: MIT
// A mount for the duration of a test, on machines that let tests mount.
#pragma once

#include <chrono>
#include <future>
#include <string>
#include <utility>

namespace sorvik_test {

class RealMount {
 public:
  // An empty file system in memory.
  static RealMount Memory(const std::string& folder);
  // A bind mount of the folder or file `source`.
  static RealMount Bind(const std::string& source, const std::string& mountPoint);
  // A new ext4 file system with `label` in the file `image`.
  static RealMount Image(const std::string& image, const std::string& label,
                         const std::string& folder);
  // A network share whose server never answers: every access blocks until the mount ends.
  static RealMount DeadShare(const std::string& folder);
  RealMount(RealMount&& other) noexcept;
  ~RealMount();

  // Unmounts. Blocked accesses fail.
  void End();

  // Runs `call` on another thread. Returns false if it blocks on this mount, which then ends.
  template <class Call>
  bool DoesNotBlock(Call call) {
    auto done = std::async(std::launch::async, std::move(call));
    if (done.wait_for(std::chrono::seconds(10)) == std::future_status::ready) return true;
    End();
    return false;
  }

  // False if the machine doesn't allow the mount.
  explicit operator bool() const noexcept { return !mountPoint_.empty(); }

 private:
  explicit RealMount(std::string mountPoint, int server = -1) noexcept
      : mountPoint_(std::move(mountPoint)), server_(server) {}

  std::string mountPoint_;
  int server_;
};

}  // namespace sorvik_test
