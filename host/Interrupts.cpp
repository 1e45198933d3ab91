// SPDX-License-Identifier: MIT
#include "Interrupts.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

#include "Failure.h"

namespace host {
namespace {

// Time for running requests to end after Ctrl-C; the program exits within two seconds.
constexpr int kGraceMilliseconds = 1500;

void Notify(int event) {
  const std::uint64_t one = 1;
  // Writing eight bytes to an eventfd is atomic, and its counter can't overflow here.
  [[maybe_unused]] const ssize_t written = write(event, &one, sizeof one);
}

sigset_t InterruptSignal() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  return set;
}

}  // namespace

Interrupts::Interrupts() {
  // Shells start background jobs with SIGINT ignored, and signalfd doesn't report ignored signals.
  signal(SIGINT, SIG_DFL);
  const sigset_t set = InterruptSignal();
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  signals_ = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
  raisedEvent_ = eventfd(0, EFD_CLOEXEC);
  stopEvent_ = eventfd(0, EFD_CLOEXEC);
  if (signals_ < 0 || raisedEvent_ < 0 || stopEvent_ < 0) {
    throw Failure(kFailed, "too many open files");
  }
  watcher_ = std::thread([this] { Watch(); });
}

Interrupts::~Interrupts() {
  Notify(stopEvent_);
  watcher_.join();
  close(signals_);
  close(raisedEvent_);
  close(stopEvent_);
}

void Interrupts::Watch() {
  pollfd waiting[] = {{signals_, POLLIN, 0}, {stopEvent_, POLLIN, 0}};
  while (poll(waiting, 2, -1) < 0) {
  }
  if ((waiting[1].revents & POLLIN) != 0) return;
  signalfd_siginfo info;
  [[maybe_unused]] const ssize_t taken = read(signals_, &info, sizeof info);
  raised_ = true;
  Notify(raisedEvent_);
  if (poll(waiting, 2, kGraceMilliseconds) > 0 && (waiting[1].revents & POLLIN) != 0) return;
  std::_Exit(kInterrupted);
}

}  // namespace host
