// SPDX-License-Identifier: MIT
// How a command ends before its time.
#pragma once

#include <stdexcept>
#include <string>

namespace host {

enum ExitCode : int { kDone = 0, kNothing = 1, kWrongUse = 2, kInterrupted = 130 };

// Ends the program with one line on stderr.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
  ExitCode Code() const noexcept { return code_; }

 private:
  ExitCode code_;
};

// Ctrl-C was pressed.
struct Interrupted {};

}  // namespace host
