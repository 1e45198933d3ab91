// SPDX-License-Identifier: MIT
// Exit codes, and the exceptions that end a command early.
#pragma once

#include <stdexcept>
#include <string>

namespace host {

enum ExitCode : int {
  kDone = 0,
  kFailed = 1,
  kUsageError = 2,
  kNothingFound = 3,       // catalog: a path has no card
  kUnreadable = 4,         // catalog: a path can't be read
  kTransientFailure = 75,  // catalog: a timeout or an I/O error; EX_TEMPFAIL of sysexits.h
  kInterrupted = 130
};

// Ends the program with one line on stderr, "sorvik: <what()>", and with --json with an error
// document on standard output.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message)
      : std::runtime_error(message), code_(code), message_(message) {}
  // what() is "<path>: <message>".
  Failure(ExitCode code, const std::string& path, const std::string& message)
      : std::runtime_error(path + ": " + message), code_(code), path_(path), message_(message) {}

  ExitCode Code() const noexcept { return code_; }
  // The path that the failure is about; empty if there is none.
  const std::string& Path() const noexcept { return path_; }
  const std::string& Message() const noexcept { return message_; }

 private:
  ExitCode code_;
  std::string path_;
  std::string message_;
};

// Thrown after Ctrl-C.
struct Interrupted {};

}  // namespace host
