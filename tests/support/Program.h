// SPDX-License-Identifier: MIT
// Runs the built program sorvik.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace sorvik_test {

struct ProgramResult {
  int exitCode = -1;  // 128 + number of the signal if a signal terminated it
  std::string output;
  std::string errors;
  long peakKilobytes = 0;  // of memory; not of runs on a terminal
};

// Runs sorvik to its end; both outputs are pipes and there is no input.
ProgramResult RunSorvik(const std::vector<std::string>& arguments);

// The same bound by the permissions of files, even if the tests run as root.
ProgramResult RunSorvikAsPlainUser(const std::vector<std::string>& arguments);

// RunSorvik with a terminal of 200 columns for both outputs. All text is in `output`, with \r\n.
ProgramResult RunSorvikOnTerminal(const std::vector<std::string>& arguments);

// For programs that end while a share blocks them: at exit the leak sanitizer stops all threads,
// and would wait for those that the share blocks.
void SkipLeakCheckOfProgram();

// A running sorvik whose standard input is a pipe that never ends.
class RunningSorvik {
 public:
  explicit RunningSorvik(const std::vector<std::string>& arguments);
  ~RunningSorvik();
  RunningSorvik(const RunningSorvik&) = delete;
  RunningSorvik& operator=(const RunningSorvik&) = delete;

  // Waits until the program reads its input. Returns false after 10 seconds.
  bool WaitUntilReading() const;
  void Signal(int number) const;
  // Waits at most `time` for the exit code. Returns -1 if the program is still running.
  int WaitFor(std::chrono::milliseconds time);

 private:
  pid_t process_ = -1;
  int input_ = -1;
};

}  // namespace sorvik_test
