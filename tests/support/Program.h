// SPDX-License-Identifier: MIT
// The built program sorvik, run as a user runs it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace sorvik_test {

struct ProgramResult {
  int exitCode = -1;  // 128 and the signal's number where a signal ended it
  std::string output;
  std::string errors;
};

// Runs sorvik to its end; both outputs are pipes and there is no input.
ProgramResult RunSorvik(const std::vector<std::string>& arguments);

// The same with one terminal of 200 columns as its outputs: all is in `output`, line ends as \r\n.
ProgramResult RunSorvikOnTerminal(const std::vector<std::string>& arguments);

// A sorvik that is still running, its input a pipe that never ends.
class RunningSorvik {
 public:
  explicit RunningSorvik(const std::vector<std::string>& arguments);
  ~RunningSorvik();
  RunningSorvik(const RunningSorvik&) = delete;
  RunningSorvik& operator=(const RunningSorvik&) = delete;

  // True once the program waits in its input.
  bool WaitUntilReading() const;
  void Signal(int number) const;
  // Its exit code, -1 if it still runs after `time`.
  int WaitFor(std::chrono::milliseconds time);

 private:
  pid_t process_ = -1;
  int input_ = -1;
};

}  // namespace sorvik_test
