// SPDX-License-Identifier: MIT
#include "Sandbox.h"

#include <sched.h>
#include <seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include <cerrno>
#include <memory>

#ifdef __SANITIZE_ADDRESS__
// The leak check needs calls that the sandbox refuses.
extern "C" [[gnu::visibility("default")]] const char* __asan_default_options() {
  return "detect_leaks=0";
}
#endif

namespace frame {
namespace {

// A frame of 8192 by 4320 pixels with 16 bits in 4:4:4 has 212 MB; decoders keep several.
constexpr rlim_t kMaxMemory = rlim_t{2} << 30;
// The library replaces a helper long before it has used this much.
constexpr rlim_t kMaxProcessorSeconds = 600;
constexpr rlim_t kMaxFiles = 16;

bool Limit(__rlimit_resource resource, rlim_t value) {
  const rlimit limit{value, value};
  return setrlimit(resource, &limit) == 0;
}

bool LimitResources() {
  bool done = Limit(RLIMIT_CPU, kMaxProcessorSeconds) && Limit(RLIMIT_NOFILE, kMaxFiles) &&
              Limit(RLIMIT_FSIZE, 0) && Limit(RLIMIT_CORE, 0);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  // These sanitizers reserve terabytes of addresses.
  done = done && Limit(RLIMIT_AS, kMaxMemory);
#endif
  return done;
}

// libheif decodes in a thread. The flags of clone3 can't be filtered, so it is reported as missing
// and the C library uses clone instead, which may start threads but no processes.
bool AllowThreads(scmp_filter_ctx filter) {
  constexpr scmp_datum_t kThread = CLONE_THREAD | CLONE_VM;
  const scmp_arg_cmp startsThread{0, SCMP_CMP_MASKED_EQ, kThread, kThread};
  return seccomp_rule_add(filter, SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0) == 0 &&
         seccomp_rule_add(filter, SCMP_ACT_ALLOW, SCMP_SYS(clone), 1, startsThread) == 0 &&
         seccomp_rule_add(filter, SCMP_ACT_ALLOW, SCMP_SYS(set_robust_list), 0) == 0 &&
         seccomp_rule_add(filter, SCMP_ACT_ALLOW, SCMP_SYS(rseq), 0) == 0;
}

// Everything else fails with EPERM, which libraries handle like a missing file.
bool FilterSystemCalls() {
  static constexpr int kAllowed[] = {
      // the library's messages, and the file
      SCMP_SYS(recvmsg), SCMP_SYS(sendto), SCMP_SYS(sendmsg), SCMP_SYS(read), SCMP_SYS(pread64),
      SCMP_SYS(lseek), SCMP_SYS(fstat), SCMP_SYS(newfstatat), SCMP_SYS(close), SCMP_SYS(poll),
      SCMP_SYS(alarm), SCMP_SYS(setitimer),
      // memory
      SCMP_SYS(brk), SCMP_SYS(mmap), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(mprotect),
      SCMP_SYS(madvise),
      // locks, signals and time
      SCMP_SYS(futex), SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn),
      SCMP_SYS(sigaltstack), SCMP_SYS(tgkill), SCMP_SYS(getpid), SCMP_SYS(gettid),
      SCMP_SYS(clock_gettime), SCMP_SYS(clock_nanosleep), SCMP_SYS(gettimeofday),
      SCMP_SYS(sched_yield), SCMP_SYS(sched_getaffinity), SCMP_SYS(getrandom), SCMP_SYS(sysinfo),
#ifdef __SANITIZE_ADDRESS__
      // reports, and a pipe to find out whether an object can be read
      SCMP_SYS(write), SCMP_SYS(pipe2),
#endif
      SCMP_SYS(exit), SCMP_SYS(exit_group)};
  struct Release {
    void operator()(void* filter) const { seccomp_release(filter); }
  };
  const std::unique_ptr<void, Release> filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)));
  if (!filter) return false;
  for (const int call : kAllowed) {
    if (seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 0) != 0) return false;
  }
  return AllowThreads(filter.get()) && seccomp_load(filter.get()) == 0;
}

}  // namespace

bool EnterSandbox() {
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0 &&
         LimitResources() && FilterSystemCalls();
}

}  // namespace frame
