// SPDX-License-Identifier: MIT
#include "foundation/platform/DetachedThread.h"

#include <pthread.h>
#include <signal.h>

#include <exception>
#include <thread>
#include <utility>

namespace Sorvik::platform {
namespace {

// Blocks all signals while a thread is created, so that the new thread inherits the mask and the
// host's signal handlers never run on it.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t previous_;
};

}  // namespace

bool StartDetachedThread(std::function<void()> loop) {
  try {
    const SignalsBlocked mask;
    std::thread(std::move(loop)).detach();
  } catch (const std::exception&) {
    return false;
  }
  return true;
}

}  // namespace Sorvik::platform
