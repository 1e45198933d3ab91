// SPDX-License-Identifier: MIT
#include "Table.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "SorvikProvider/foundation/EscapedText.h"
#include "Text.h"

namespace host {
namespace {

using Row = std::vector<std::string>;

constexpr std::size_t kGap = 2;        // cells between columns
constexpr std::size_t kMinWidth = 12;  // a timecode stays complete

Row Shown(const Output& output, const Row& row) {
  Row shown;
  for (const std::string& cell : row) shown.push_back(output.Shown(cell));
  return shown;
}

void Widen(std::vector<std::size_t>& widths, const Row& row) {
  for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], CellWidth(row[i]));
}

std::size_t LineWidth(const std::vector<std::size_t>& widths) {
  return std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
}

// Returns the index of the widest column that can become narrower, or the number of columns.
std::size_t WidestColumn(const std::vector<std::size_t>& widths, const std::vector<bool>& fixed) {
  std::size_t widest = widths.size();
  for (std::size_t i = 0; i < widths.size(); ++i) {
    if (fixed[i] || widths[i] <= kMinWidth) continue;
    if (widest == widths.size() || widths[i] > widths[widest]) widest = i;
  }
  return widest;
}

std::string TsvText(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '\t':
        escaped += "\\t";
        break;
      case '\n':
        escaped += "\\n";
        break;
      case '\r':
        escaped += "\\r";
        break;
      case '\\':
        escaped += "\\\\";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string TsvLine(const std::vector<std::string>& row) {
  std::string line;
  for (std::size_t i = 0; i < row.size(); ++i) line += (i == 0 ? "" : "\t") + TsvText(row[i]);
  return line;
}

}  // namespace

std::vector<std::size_t> FitWidths(std::vector<std::size_t> widths, const std::vector<bool>& fixed,
                                   std::size_t limit) {
  std::vector<std::size_t> narrowest = widths;
  for (std::size_t i = 0; i < widths.size(); ++i) {
    if (!fixed[i]) narrowest[i] = std::min(widths[i], kMinWidth);
  }
  while (narrowest.size() > 1 && LineWidth(narrowest) > limit) narrowest.pop_back();
  widths.resize(narrowest.size());
  while (LineWidth(widths) > limit) {
    const std::size_t widest = WidestColumn(widths, fixed);
    if (widest == widths.size()) break;
    --widths[widest];
  }
  return widths;
}

void Table::Write(Output& output, TableForm form) const {
  if (form == TableForm::kAligned) {
    WriteAligned(output);
  } else {
    WriteSeparated(output, form);
  }
}

void Table::WriteAligned(Output& output) const {
  std::vector<Row> rows;
  if (std::any_of(headings_.begin(), headings_.end(), [](const auto& h) { return !h.empty(); })) {
    rows.push_back(Shown(output, headings_));
  }
  for (const Row& row : rows_) rows.push_back(Shown(output, row));
  std::vector<std::size_t> widths(headings_.size(), 0);
  for (const Row& row : rows) Widen(widths, row);
  const int columns = output.IsTerminal() ? TerminalColumns() : 0;
  if (columns > 0) widths = FitWidths(widths, fixed_, static_cast<std::size_t>(columns));

  for (const Row& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      const std::string text = fixed_[i] ? row[i] : ShortenedMiddle(row[i], widths[i]);
      const std::string padding(widths[i] - std::min(widths[i], CellWidth(text)), ' ');
      line += alignment_[i] == Align::kRight ? padding + text : text + padding;
      if (i + 1 < widths.size()) line.append(kGap, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    output.Write(line + "\n");
  }
}

void Table::WriteSeparated(Output& output, TableForm form) const {
  const bool csv = form == TableForm::kCsv;
  const auto write = [&](const Row& row) {
    output.Write(output.Shown(csv ? Hestra::CsvLine(row) : TsvLine(row)) + (csv ? "\r\n" : "\n"));
  };
  write(headings_);
  for (const Row& row : rows_) write(row);
}

}  // namespace host
