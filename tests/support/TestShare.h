// SPDX-License-Identifier: MIT
// A mounted network share whose server a test can stop.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <chrono>
#include <cstdio>
#include <future>
#include <string>
#include <utility>

#include "support/TempTree.h"

namespace sorvik_test {

class TestShare {
 public:
  // Shows `folder` at `mountPoint` through FUSE, as the file system "fuse." + `subtype`.
  TestShare(const std::string& folder, const std::string& mountPoint,
            const std::string& subtype = "sshfs");
  ~TestShare();
  TestShare(const TestShare&) = delete;
  TestShare& operator=(const TestShare&) = delete;

  // False if this machine has no FUSE or doesn't allow the mount; Reason() has the reason.
  explicit operator bool() const noexcept { return reason_.empty(); }
  const std::string& Reason() const noexcept { return reason_; }

  // Stops the server: every access blocks until it continues or the mount ends.
  void Stop();
  void Continue();

  // Every call takes longer from now on.
  void SetDelay(std::chrono::microseconds delay) {
    Command("delay " + std::to_string(delay.count()));
  }
  // The call with this number, counted from now on from 1, and all later ones block.
  void BlockAt(long call) { Command("block " + std::to_string(call)); }
  void Lift() { Command("lift"); }
  // The number of calls since BlockAt.
  long Calls() { return Command("calls"); }
  // The largest number of calls at the same time since the last MostCalls.
  long MostCalls() { return Command("most"); }

  // Runs `call` on another thread and returns its duration in milliseconds. If it blocks, ends the
  // mount and returns a negative number.
  template <class Call>
  long long Milliseconds(Call call) {
    const auto start = std::chrono::steady_clock::now();
    auto done = std::async(std::launch::async, std::move(call));
    const bool returned = done.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    if (!returned) End();
    done.wait();
    const auto elapsed = std::chrono::steady_clock::now() - start;
    return returned ? std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count() : -1;
  }

 private:
  void End();
  std::string ReadLine();
  long Command(const std::string& command);

  std::string mountPoint_;
  std::string reason_;
  pid_t server_ = -1;
  std::FILE* output_ = nullptr;  // of the server
  int input_ = -1;
};

// A folder "folder" with a share mounted at "share", whose server has the folder "server".
class ShareTest : public testing::Test {
 protected:
  ShareTest() : share_(tree_.Folder("server"), tree_.Folder("share")) { tree_.Folder("folder"); }
  void SetUp() override {
    if (!share_) GTEST_SKIP() << share_.Reason();
  }

  TempTree tree_;
  TestShare share_;
};

}  // namespace sorvik_test
