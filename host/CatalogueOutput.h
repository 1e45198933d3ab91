// SPDX-License-Identifier: MIT
// Where the lines of a catalogue are written.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "Output.h"

namespace host {

// All operations throw Failure if they can't write.
class LineWriter {
 public:
  virtual ~LineWriter() = default;
  virtual void Write(std::string_view line) = 0;
  // After the last line. Without it the result of an earlier run stays.
  virtual void Finish() = 0;
};

// Writes to standard output, and flushes it after each card.
std::unique_ptr<LineWriter> WriteLinesToOutput(Output& output);

// Writes to `path` + ".part", which Finish renames to `path`: a file of that name is complete. A
// device or pipe is written to directly, and a link is followed.
std::unique_ptr<LineWriter> WriteLinesToFile(const std::string& path);

// Writes to the tables card, clip, file and problem of an SQLite database, in one transaction. A
// card replaces all rows that the database has about the same card; other rows stay.
std::unique_ptr<LineWriter> WriteLinesToDatabase(const std::string& path);

}  // namespace host
