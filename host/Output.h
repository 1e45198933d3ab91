// SPDX-License-Identifier: MIT
// The standard output: raw for pipes and tools, with names made harmless for terminals.
#pragma once

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
  // `text` as it may be shown: escaped on a terminal, as it stands elsewhere.
  std::string Shown(std::string_view text) const;

  // Bytes as they stand, buffered.
  void Write(std::string_view bytes);
  // Throws Failure if not all could be written.
  void Flush();

 private:
  std::string waiting_;
  bool isTerminal_;
};

// One line on stderr: "sorvik: <message>".
void WriteError(std::string_view message);

// The width of the terminal in cells, 0 if it isn't known.
int TerminalColumns();

// Writes a whole file; "-" is the standard output. Throws Failure, and leaves no half file behind;
// a device or link stays.
void WriteWhole(Output& output, const std::string& path, std::string_view bytes);

}  // namespace host
