// SPDX-License-Identifier: MIT
#include "support/TestShare.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>

namespace sorvik_test {

TestShare::TestShare(const std::string& folder, const std::string& mountPoint,
                     const std::string& subtype)
    : mountPoint_(mountPoint) {
#ifdef SORVIK_TEST_SHARE
  if (access("/dev/fuse", R_OK | W_OK) != 0) {
    reason_ = "/dev/fuse can't be used";
    return;
  }
  std::array<int, 2> output;
  std::array<int, 2> input;
  if (pipe2(output.data(), O_CLOEXEC) != 0 || pipe2(input.data(), O_CLOEXEC) != 0) {
    reason_ = "no pipe";
    return;
  }
  server_ = fork();
  if (server_ == 0) {
    dup2(output[1], STDOUT_FILENO);
    dup2(input[0], STDIN_FILENO);
    execl(SORVIK_TEST_SHARE, SORVIK_TEST_SHARE, folder.c_str(), mountPoint.c_str(), subtype.c_str(),
          static_cast<char*>(nullptr));
    _exit(1);
  }
  close(output[1]);
  close(input[0]);
  output_ = fdopen(output[0], "r");
  input_ = input[1];
  if (ReadLine().empty()) reason_ = "this machine doesn't allow a FUSE mount";
#else
  static_cast<void>(folder);
  static_cast<void>(subtype);
  reason_ = "the tests were built without libfuse3";
#endif
}

TestShare::~TestShare() { End(); }

void TestShare::Stop() {
  if (server_ > 0) kill(server_, SIGSTOP);
}

void TestShare::Continue() {
  if (server_ > 0) kill(server_, SIGCONT);
}

std::string TestShare::ReadLine() {
  std::array<char, 64> line{};
  return std::fgets(line.data(), line.size(), output_) == nullptr ? "" : line.data();
}

long TestShare::Command(const std::string& command) {
  const std::string line = command + "\n";
  if (write(input_, line.data(), line.size()) < 0) return -1;
  return std::strtol(ReadLine().c_str(), nullptr, 10);
}

void TestShare::End() {
  if (server_ <= 0) return;
  umount2(mountPoint_.c_str(), MNT_DETACH);
  kill(server_, SIGKILL);
  waitpid(server_, nullptr, 0);
  server_ = -1;
  std::fclose(output_);
  close(input_);
}

}  // namespace sorvik_test
