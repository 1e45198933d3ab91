// SPDX-License-Identifier: MIT
// Standard output: unchanged bytes for pipes, escaped names on terminals.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace host {

class Output {
 public:
  Output();
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  bool IsTerminal() const noexcept { return isTerminal_; }
  // JSON is indented on a terminal, unless each document has to be one line.
  bool IndentsJson() const noexcept { return isTerminal_ && !jsonLines_; }
  void SetJsonLines(bool lines) noexcept { jsonLines_ = lines; }
  // True once anything has been written.
  bool HasWritten() const noexcept { return hasWritten_; }
  // Returns `text` escaped for a terminal, or unchanged if the output isn't a terminal.
  std::string Shown(std::string_view text) const;

  // Writes bytes unchanged. Buffered.
  void Write(std::string_view bytes);
  // Throws Failure if the buffer can't be written completely.
  void Flush();

 private:
  std::string waiting_;
  bool isTerminal_;
  bool hasWritten_ = false;
  bool jsonLines_ = false;
};

// One line on stderr: "sorvik: <message>".
void WriteError(std::string_view message);

// Returns the width of the terminal in cells, or 0 if unknown.
int TerminalColumns();

// A file that is written in parts; "-" is standard output. Unless it is closed, or after a write
// error, an incomplete regular file is removed (never a device or link).
class OutputFile {
 public:
  // All three throw Failure if the file can't be written.
  OutputFile(Output& output, const std::string& path);
  void Write(std::string_view bytes);
  void Close();
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

 private:
  [[noreturn]] void Fail() const;

  Output& output_;
  std::string path_;
  std::FILE* file_ = nullptr;
};

// Writes `bytes` to a file; "-" is standard output. On a write error it removes an incomplete
// regular file (never a device or link) and throws Failure.
void WriteFile(Output& output, const std::string& path, std::string_view bytes);

}  // namespace host
