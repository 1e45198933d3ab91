// SPDX-License-Identifier: MIT
#include "support/TestShare.h"

#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>

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
  if (pipe(output.data()) != 0) {
    reason_ = "no pipe";
    return;
  }
  server_ = fork();
  if (server_ == 0) {
    dup2(output[1], STDOUT_FILENO);
    close(output[0]);
    close(output[1]);
    execl(SORVIK_TEST_SHARE, SORVIK_TEST_SHARE, folder.c_str(), mountPoint.c_str(), subtype.c_str(),
          static_cast<char*>(nullptr));
    _exit(1);
  }
  close(output[1]);
  char byte = 0;
  if (read(output[0], &byte, 1) != 1) reason_ = "this machine doesn't allow a FUSE mount";
  close(output[0]);
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

void TestShare::End() {
  if (server_ <= 0) return;
  umount2(mountPoint_.c_str(), MNT_DETACH);
  kill(server_, SIGKILL);
  waitpid(server_, nullptr, 0);
  server_ = -1;
}

}  // namespace sorvik_test
