// SPDX-License-Identifier: MIT
// Exit codes, and the exceptions that end a command early.
#pragma once

#include <stdexcept>
#include <string>

namespace host {

enum ExitCode : int { kDone = 0, kFailed = 1, kUsageError = 2, kInterrupted = 130 };

// Ends the program with one line on stderr: "sorvik: <message>".
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
  ExitCode Code() const noexcept { return code_; }

 private:
  ExitCode code_;
};

// Thrown after Ctrl-C.
struct Interrupted {};

}  // namespace host
