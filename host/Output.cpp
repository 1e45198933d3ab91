// SPDX-License-Identifier: MIT
#include "Output.h"

#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "Failure.h"
#include "Text.h"

namespace host {
namespace {

constexpr std::size_t kBufferSize = 1 << 16;

// Escapes line breaks, so that a name with one doesn't split the error message.
std::string OnOneLine(std::string_view text) {
  std::string line;
  for (const char c : text) {
    if (c == '\n') {
      line += "\\x0a";
    } else if (c == '\r') {
      line += "\\x0d";
    } else {
      line += c;
    }
  }
  return line;
}

// NO_COLOR: see https://no-color.org.
bool WantsColour() {
  const char* const refused = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return (refused == nullptr || *refused == '\0') && terminal != nullptr &&
         std::strcmp(terminal, "dumb") != 0;
}

// Devices and links are never removed.
bool IsRegularFileNotLink(const std::string& path) {
  struct stat facts {};
  return lstat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode);
}

}  // namespace

Output::Output() : isTerminal_(isatty(STDOUT_FILENO) == 1) {}

Output::~Output() {
  // Remaining bytes are those of a failed command; another write error isn't reported.
  std::fwrite(waiting_.data(), 1, waiting_.size(), stdout);
  std::fflush(stdout);
}

std::string Output::Shown(std::string_view text) const {
  return isTerminal_ ? EscapedForTerminal(text) : std::string(text);
}

void Output::Write(std::string_view bytes) {
  hasWritten_ = hasWritten_ || !bytes.empty();
  waiting_ += bytes;
  if (waiting_.size() >= kBufferSize) Flush();
}

void Output::Flush() {
  const std::string bytes = std::move(waiting_);
  waiting_.clear();
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size();
  if (!written || std::fflush(stdout) != 0) {
    throw Failure(kFailed,
                  std::string("standard output: cannot write (") + std::strerror(errno) + ")");
  }
}

void WriteError(std::string_view message) {
  const bool terminal = isatty(STDERR_FILENO) == 1;
  const std::string line = terminal ? EscapedForTerminal(message) : OnOneLine(message);
  const char* const program = terminal && WantsColour() ? "\x1b[31msorvik:\x1b[0m" : "sorvik:";
  std::fprintf(stderr, "%s %s\n", program, line.c_str());
}

int TerminalColumns() {
  winsize size{};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

OutputFile::OutputFile(Output& output, const std::string& path) : output_(output), path_(path) {
  if (path == "-") return;
  file_ = std::fopen(path.c_str(), "wbe");
  if (file_ == nullptr) Fail();
}

void OutputFile::Write(std::string_view bytes) {
  if (file_ == nullptr) {
    output_.Write(bytes);
  } else if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) {
    Fail();
  }
}

void OutputFile::Close() {
  if (file_ == nullptr) return;
  std::FILE* const file = std::exchange(file_, nullptr);
  if (std::fclose(file) == 0) return;
  const int reason = errno;
  if (IsRegularFileNotLink(path_)) std::remove(path_.c_str());
  errno = reason;
  Fail();
}

OutputFile::~OutputFile() {
  if (file_ == nullptr) return;
  std::fclose(file_);
  if (IsRegularFileNotLink(path_)) std::remove(path_.c_str());
}

void OutputFile::Fail() const {
  throw Failure(kFailed, path_, std::string("cannot write (") + std::strerror(errno) + ")");
}

void WriteFile(Output& output, const std::string& path, std::string_view bytes) {
  OutputFile file(output, path);
  file.Write(bytes);
  file.Close();
}

}  // namespace host
