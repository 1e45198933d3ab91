// SPDX-License-Identifier: MIT
// Rows of text: aligned columns, tab-separated values, or CSV.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Output.h"

namespace host {

enum class TableForm { kAligned, kTsv, kCsv };

class Table {
 public:
  enum class Align { kLeft, kRight };

  // One heading per column. If all are empty, no heading line is written.
  explicit Table(std::vector<std::string> headings)
      : headings_(std::move(headings)),
        alignment_(headings_.size(), Align::kLeft),
        fixed_(headings_.size(), false) {}

  void SetAlign(std::size_t column, Align align) { alignment_[column] = align; }
  // Never shortens the texts of this column.
  void SetFixed(std::size_t column) { fixed_[column] = true; }
  // One cell per column.
  void Add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }

  // kAligned fits the table to the width of a terminal: it shortens the widest columns in the
  // middle and omits the last columns if that isn't enough. A pipe gets complete texts. kTsv
  // escapes tabs, line breaks and backslashes by a backslash; kCsv is RFC 4180.
  void Write(Output& output, TableForm form = TableForm::kAligned) const;

 private:
  void WriteAligned(Output& output) const;
  void WriteSeparated(Output& output, TableForm form) const;

  std::vector<std::string> headings_;
  std::vector<Align> alignment_;
  std::vector<bool> fixed_;
  std::vector<std::vector<std::string>> rows_;
};

// Reduces column widths, separated by two cells, to a line of `limit` cells. Columns that are not
// `fixed` become narrower, the widest first, but no narrower than 12. The last columns are removed
// if that isn't enough; the first stays. Exposed for tests.
std::vector<std::size_t> FitWidths(std::vector<std::size_t> widths, const std::vector<bool>& fixed,
                                   std::size_t limit);

}  // namespace host
