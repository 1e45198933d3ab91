// SPDX-License-Identifier: MIT
// Rows of text in aligned columns.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Output.h"

namespace host {

class Table {
 public:
  enum class Align { kLeft, kRight };

  // One heading per column. If all are empty, no heading line is written.
  explicit Table(std::vector<std::string> headings)
      : headings_(std::move(headings)), alignment_(headings_.size(), Align::kLeft) {}

  void SetAlign(std::size_t column, Align align) { alignment_[column] = align; }
  // One cell per column.
  void Add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }

  void Write(Output& output) const;

 private:
  std::vector<std::string> headings_;
  std::vector<Align> alignment_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace host
