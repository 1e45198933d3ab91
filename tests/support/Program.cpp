// SPDX-License-Identifier: MIT
#include "support/Program.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <utility>

namespace sorvik_test {
namespace {

struct Pipe {
  std::array<int, 2> ends{-1, -1};
  Pipe() {
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  }
  ~Pipe() {
    CloseRead();
    CloseWrite();
  }
  void CloseRead() { CloseEnd(ends[0]); }
  void CloseWrite() { CloseEnd(ends[1]); }
  static void CloseEnd(int& end) {
    if (end >= 0) close(end);
    end = -1;
  }
};

// Executes sorvik in the child process, with a fixed language.
[[noreturn]] void ExecSorvik(const std::vector<std::string>& arguments) {
  setenv("LC_ALL", "C", 1);
  unsetenv("LANGUAGE");
  std::string program = SORVIK_BINARY_DIR "/sorvik";
  std::vector<std::string> words = arguments;
  std::vector<char*> pointers = {program.data()};
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  execv(program.c_str(), pointers.data());
  _exit(127);
}

// Without them permissions of files bind root, too. Other users don't have them.
void DropCapabilitiesOfFiles() {
  prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
  prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
}

int CodeOf(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status); }

int WaitForEnd(pid_t process) {
  int status = 0;
  while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return CodeOf(status);
}

// Returns false at the end, which is EIO on a terminal whose other side is closed.
bool ReadSome(int descriptor, std::string& text) {
  std::array<char, 4096> piece;
  const ssize_t got = read(descriptor, piece.data(), piece.size());
  if (got > 0) text.append(piece.data(), static_cast<std::size_t>(got));
  return got > 0 || (got < 0 && errno == EINTR);
}

ProgramResult Run(const std::vector<std::string>& arguments, void (*prepare)()) {
  Pipe output;
  Pipe errors;
  const pid_t process = fork();
  if (process == 0) {
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(output.ends[1], STDOUT_FILENO);
    dup2(errors.ends[1], STDERR_FILENO);
    if (prepare != nullptr) prepare();
    ExecSorvik(arguments);
  }
  output.CloseWrite();
  errors.CloseWrite();
  ProgramResult result;
  std::thread reader([&] {
    while (ReadSome(errors.ends[0], result.errors)) {
    }
  });
  while (ReadSome(output.ends[0], result.output)) {
  }
  reader.join();
  int status = 0;
  rusage use{};
  while (wait4(process, &status, 0, &use) < 0 && errno == EINTR) {
  }
  result.exitCode = CodeOf(status);
  result.peakKilobytes = use.ru_maxrss;
  return result;
}

}  // namespace

ProgramResult RunSorvik(const std::vector<std::string>& arguments) {
  return Run(arguments, nullptr);
}

ProgramResult RunSorvikAsPlainUser(const std::vector<std::string>& arguments) {
  return Run(arguments, DropCapabilitiesOfFiles);
}

ProgramResult RunSorvikOnTerminal(const std::vector<std::string>& arguments) {
  const winsize size{50, 200, 0, 0};
  int terminal = -1;
  const pid_t process = forkpty(&terminal, nullptr, nullptr, &size);
  if (process == 0) ExecSorvik(arguments);
  ProgramResult result;
  while (ReadSome(terminal, result.output)) {
  }
  close(terminal);
  result.exitCode = WaitForEnd(process);
  return result;
}

void SkipLeakCheckOfProgram() {
  const char* options = std::getenv("ASAN_OPTIONS");
  setenv("ASAN_OPTIONS", (std::string(options ? options : "") + ":detect_leaks=0").c_str(), 1);
}

RunningSorvik::RunningSorvik(const std::vector<std::string>& arguments) {
  Pipe input;
  process_ = fork();
  if (process_ == 0) {
    dup2(input.ends[0], STDIN_FILENO);
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    dup2(null, STDERR_FILENO);
    ExecSorvik(arguments);
  }
  std::swap(input_, input.ends[1]);
}

RunningSorvik::~RunningSorvik() {
  if (process_ > 0) {
    kill(process_, SIGKILL);
    WaitForEnd(process_);
  }
  close(input_);
}

bool RunningSorvik::WaitUntilReading() const {
  const std::string text(4096, ' ');
  if (fcntl(input_, F_SETFL, O_NONBLOCK) != 0) return false;
  while (write(input_, text.data(), text.size()) > 0) {
  }
  // A full pipe becomes writable again when the program reads from it.
  pollfd writable{input_, POLLOUT, 0};
  return errno == EAGAIN && poll(&writable, 1, 10'000) == 1;
}

void RunningSorvik::Signal(int number) const {
  // kill(-1, ...) would signal every process of the machine.
  if (process_ > 0) kill(process_, number);
}

int RunningSorvik::WaitFor(std::chrono::milliseconds time) {
  const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, process_, 0));
  pollfd ended{descriptor, POLLIN, 0};
  const bool hasEnded = poll(&ended, 1, static_cast<int>(time.count())) == 1;
  close(descriptor);
  return hasEnded ? WaitForEnd(std::exchange(process_, -1)) : -1;
}

}  // namespace sorvik_test
