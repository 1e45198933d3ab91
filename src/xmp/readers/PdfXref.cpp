// SPDX-License-Identifier: MIT
#include "xmp/readers/PdfXref.h"

#include <algorithm>
#include <cstdlib>

#include "foundation/Inflate.h"
#include "xmp/readers/PdfObjects.h"

namespace Sorvik::xmp {

namespace {

using foundation::ReaderOf;

// Editors append a section with each change; catalogs and dictionaries of streams are short.
constexpr std::size_t kMaxSections = 64;
constexpr std::size_t kMaxRanges = 1024;
constexpr std::uint64_t kMaxObjectBytes = 64 * 1024;
constexpr std::uint64_t kMaxTableBytes = std::uint64_t{32} << 20;  // of all sections
constexpr std::uint64_t kTailLength = 2048;
constexpr std::uint64_t kEntryLength = 20;  // in a table: "0000000015 00000 n \r\n"

// Undoes the filters of PNG (ISO/IEC 15948, clause 9) for one byte per pixel, by which the rows of
// cross-reference streams are compressed. Returns an empty string for an invalid filter.
std::string WithoutPredictor(std::string_view rows, std::uint64_t columns) {
  const auto width = static_cast<std::size_t>(columns);
  std::string data;
  for (std::size_t at = 0; rows.size() - at > width; at += width + 1) {
    const std::size_t row = data.size();
    for (std::size_t i = 0; i < width; ++i) {
      const auto byte = [](char c) { return static_cast<int>(static_cast<unsigned char>(c)); };
      const int left = i == 0 ? 0 : byte(data[row + i - 1]);
      const int up = row == 0 ? 0 : byte(data[row + i - width]);
      const int corner = i == 0 || row == 0 ? 0 : byte(data[row + i - width - 1]);
      const int paeth = left + up - corner;
      const int a = std::abs(paeth - left), b = std::abs(paeth - up), c = std::abs(paeth - corner);
      const int nearest = a <= b && a <= c ? left : b <= c ? up : corner;
      const int predictions[] = {0, left, up, (left + up) / 2, nearest};
      const int filter = byte(rows[at]);
      if (filter > 4) return {};
      data.push_back(static_cast<char>(byte(rows[at + 1 + i]) + predictions[filter]));
    }
  }
  return data;
}

// Decodes the data of a stream by its dictionary.
std::string Decoded(std::string data, std::string_view dictionary) {
  std::string_view filter = PdfValue(dictionary, "/Filter");
  std::string_view parameters = PdfValue(dictionary, "/DecodeParms");
  PdfLexer filters(filter);
  if (filter.starts_with('[')) {
    filters.Next();
    filter = filters.Next();
    if (filters.Next() != "]") return {};  // several filters
    PdfLexer list(parameters);
    list.Next();
    parameters = list.NextObject();
  }
  if (filter.empty() || filter == "]") return data;
  if (filter != "/FlateDecode") return {};
  data = foundation::Inflate(data, FileWindow::kMaxBytes);
  constexpr std::uint64_t kFirstPNGPredictor = 10;
  if (PdfInteger(PdfValue(parameters, "/Predictor")).value_or(1) < kFirstPNGPredictor) return data;
  const auto columns = PdfInteger(PdfValue(parameters, "/Columns")).value_or(1);
  if (columns == 0 || columns > kMaxObjectBytes) return {};
  return WithoutPredictor(data, columns);
}

// A big-endian number of up to 8 bytes.
std::uint64_t Field(std::string_view data, std::uint64_t at, std::uint64_t width) {
  std::uint64_t value = 0;
  for (std::uint64_t i = 0; i < width; ++i) {
    value = value << 8 | ReaderOf(data).U8(at + i).value_or(0);
  }
  return value;
}

}  // namespace

bool PdfXref::Open() {
  std::uint64_t start = 0;
  const std::string tail(file_.Tail(kTailLength, start).Text());
  constexpr std::string_view kKeyword = "startxref";
  const std::size_t at = tail.rfind(kKeyword);
  if (at == tail.npos) return false;
  auto offset = PdfInteger(PdfLexer(std::string_view(tail).substr(at + kKeyword.size())).Next());
  while (offset && sections_.size() < kMaxSections && ReadSection(*offset)) {
    const std::string& trailer = sections_.back().trailer;
    // Objects that older readers must not see are in a stream (7.5.8.4).
    const auto hidden = PdfInteger(PdfValue(trailer, "/XRefStm"));
    offset = PdfInteger(PdfValue(trailer, "/Prev"));
    if (hidden) ReadSection(*hidden);
  }
  return !sections_.empty();
}

bool PdfXref::ReadSection(std::uint64_t offset) {
  constexpr std::string_view kTable = "xref";
  if (offset > file_.Size()) return false;
  Section section;
  const bool table = file_.At(base_ + offset, kTable.size()).Text() == kTable;
  const bool read = table ? ReadTable(base_ + offset + kTable.size(), section)
                          : ReadXrefStream(base_ + offset, section);
  // Compressed tables can be a thousand times larger than the file.
  if (!read || section.data.size() > kMaxTableBytes - tableBytes_) return false;
  tableBytes_ += section.data.size();
  sections_.push_back(std::move(section));
  return true;
}

bool PdfXref::ReadTable(std::uint64_t at, Section& section) {
  while (section.ranges.size() < kMaxRanges) {
    constexpr std::uint64_t kHeaderBytes = 64;
    const std::string_view header = file_.At(at, kHeaderBytes).Text();
    PdfLexer lexer(header);
    const std::string_view first = lexer.Next();
    if (first == "trailer") {
      at += lexer.Offset();
      const std::string text(file_.At(at, kMaxObjectBytes).Text());
      section.trailer = PdfLexer(text).NextObject();
      return section.trailer.starts_with("<<");
    }
    const auto number = PdfInteger(first);
    const auto count = PdfInteger(lexer.Next());
    if (!number || !count || *count > file_.Size() / kEntryLength) return false;
    const std::size_t entries = header.find_first_not_of(" \r\n\t", lexer.Offset());
    if (entries == header.npos) return false;
    section.ranges.push_back({*number, *count, at + entries});
    at += entries + *count * kEntryLength;
  }
  return false;
}

bool PdfXref::ReadXrefStream(std::uint64_t offset, Section& section) {
  section.data = StreamAt(offset, section.trailer);
  PdfLexer widths(PdfValue(section.trailer, "/W"));
  if (section.data.empty() || widths.Next() != "[") return false;
  for (std::uint64_t& width : section.widths) width = PdfInteger(widths.Next()).value_or(9);
  const auto& w = section.widths;
  if (std::max({w[0], w[1], w[2]}) > 8 || w[0] + w[1] + w[2] == 0) return false;
  const std::string_view index = PdfValue(section.trailer, "/Index");
  if (index.empty()) {
    section.ranges.push_back({0, section.data.size(), 0});
    return true;
  }
  PdfLexer pairs(index.substr(1));
  std::uint64_t at = 0;
  while (section.ranges.size() < kMaxRanges) {
    const auto first = PdfInteger(pairs.Next());
    const auto count = PdfInteger(pairs.Next());
    if (!first || !count || *count > section.data.size()) break;
    section.ranges.push_back({*first, *count, at});
    at += *count * (w[0] + w[1] + w[2]);
  }
  return true;
}

std::optional<PdfXref::Location> PdfXref::LocateIn(const Section& section, std::uint64_t entry) {
  if (section.data.empty()) {
    // "nnnnnnnnnn ggggg n": offset, generation, in use.
    const std::string text(file_.At(entry, kEntryLength).Text());
    PdfLexer lexer(text);
    const auto offset = PdfInteger(lexer.Next());
    lexer.Next();
    if (!offset || lexer.Next() != "n") return std::nullopt;
    return Location{*offset, 0, 0};
  }
  const auto& w = section.widths;
  // Type 1: offset and generation; type 2: object stream and index. Type 1 is the default.
  const std::uint64_t type = w[0] == 0 ? 1 : Field(section.data, entry, w[0]);
  const std::uint64_t second = Field(section.data, entry + w[0], w[1]);
  const std::uint64_t third = Field(section.data, entry + w[0] + w[1], w[2]);
  if (type == 1) return Location{second, 0, 0};
  if (type == 2 && second != 0) return Location{0, second, third};
  return std::nullopt;
}

std::optional<PdfXref::Location> PdfXref::Locate(std::uint64_t number) {
  for (const Section& section : sections_) {
    const auto& w = section.widths;
    const std::uint64_t length = section.data.empty() ? kEntryLength : w[0] + w[1] + w[2];
    for (const Range& range : section.ranges) {
      if (number < range.first || number - range.first >= range.count) continue;
      return LocateIn(section, range.entries + (number - range.first) * length);
    }
  }
  return std::nullopt;
}

// The object at `offset` after its "n g obj".
std::string PdfXref::TextAt(std::uint64_t offset) {
  const std::string_view text = file_.At(offset, kMaxObjectBytes).Text();
  PdfLexer lexer(text);
  if (!PdfInteger(lexer.Next()) || !PdfInteger(lexer.Next()) || lexer.Next() != "obj") return {};
  return std::string(lexer.NextObject());
}

std::string PdfXref::Object(std::uint64_t number) {
  const auto location = Locate(number);
  if (!location) return {};
  return location->container == 0 ? TextAt(base_ + location->offset) : ObjectInStream(*location);
}

// An object stream begins with pairs of object number and offset (7.5.7).
std::string PdfXref::ObjectInStream(const Location& location) {
  const auto container = Locate(location.container);
  if (!container || container->container != 0) return {};
  std::string dictionary;
  const std::string data = StreamAt(base_ + container->offset, dictionary);
  const auto first = PdfInteger(PdfValue(dictionary, "/First"));
  PdfLexer lexer(data);
  for (std::uint64_t i = 0; i < location.index; ++i) {
    lexer.Next();
    if (lexer.Next().empty()) return {};
  }
  lexer.Next();
  const auto offset = PdfInteger(lexer.Next());
  if (!first || !offset || *first > data.size() || *offset > data.size() - *first) return {};
  return std::string(
      PdfLexer(std::string_view(data).substr(static_cast<std::size_t>(*first + *offset)))
          .NextObject());
}

std::string PdfXref::Stream(std::uint64_t number) {
  const auto location = Locate(number);
  if (!location || location->container != 0) return {};
  std::string dictionary;
  return StreamAt(base_ + location->offset, dictionary);
}

std::string PdfXref::StreamAt(std::uint64_t offset, std::string& dictionary) {
  const std::string text(file_.At(offset, kMaxObjectBytes).Text());
  PdfLexer lexer(text);
  if (!PdfInteger(lexer.Next()) || !PdfInteger(lexer.Next()) || lexer.Next() != "obj") return {};
  dictionary = lexer.NextObject();
  if (!dictionary.starts_with("<<") || lexer.Next() != "stream") return {};
  // The keyword is followed by CR LF or LF.
  std::size_t data = lexer.Offset();
  if (std::string_view(text).substr(data).starts_with('\r')) ++data;
  if (std::string_view(text).substr(data).starts_with('\n')) ++data;

  const std::string_view value = PdfValue(dictionary, "/Length");
  auto length = PdfInteger(value);
  if (const auto reference = PdfReference(value); reference && !resolving_) {
    resolving_ = true;
    length = PdfInteger(Object(*reference));
    resolving_ = false;
  }
  if (!length) return {};
  return Decoded(file_.Copy(offset + data, *length), dictionary);
}

}  // namespace Sorvik::xmp
