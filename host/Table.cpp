// SPDX-License-Identifier: MIT
#include "Table.h"

#include <algorithm>
#include <utility>

#include "Text.h"

namespace host {
namespace {

using Row = std::vector<std::string>;

Row Shown(const Output& output, const Row& row) {
  Row shown;
  for (const std::string& cell : row) shown.push_back(output.Shown(cell));
  return shown;
}

void Widen(std::vector<std::size_t>& widths, const Row& row) {
  for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], CellWidth(row[i]));
}

}  // namespace

void Table::Write(Output& output) const {
  std::vector<Row> rows;
  if (std::any_of(headings_.begin(), headings_.end(), [](const auto& h) { return !h.empty(); })) {
    rows.push_back(Shown(output, headings_));
  }
  for (const Row& row : rows_) rows.push_back(Shown(output, row));
  std::vector<std::size_t> widths(headings_.size(), 0);
  for (const Row& row : rows) Widen(widths, row);

  for (const Row& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string padding(widths[i] - CellWidth(row[i]), ' ');
      line += alignment_[i] == Align::kRight ? padding + row[i] : row[i] + padding;
      if (i + 1 < row.size()) line += "  ";
    }
    line.erase(line.find_last_not_of(' ') + 1);
    output.Write(line + "\n");
  }
}

}  // namespace host
