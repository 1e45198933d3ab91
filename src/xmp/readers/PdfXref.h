// SPDX-License-Identifier: MIT
// Finds and reads the objects of a PDF file through its cross-reference tables and streams.
// Facts: ISO 32000-1, 7.3.8, 7.5.4 to 7.5.8 and 7.4.4.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "xmp/readers/FileWindow.h"

namespace Sorvik::xmp {

class PdfXref {
 public:
  // `file` must outlive this object. `base` is the offset of the header, from which all others
  // count.
  PdfXref(FileWindow& file, std::uint64_t base) : file_(file), base_(base) {}

  // Reads the sections, beginning with the last one of the file. Returns false if the last one
  // can't be read.
  bool Open();
  // The dictionary of the last section's trailer.
  const std::string& Trailer() const noexcept { return sections_.front().trailer; }
  // Returns the text of an object; empty if it is missing. Streams give their dictionary.
  std::string Object(std::uint64_t number);
  // Returns the decoded data of a stream; empty if it is missing, or has filters other than Flate.
  std::string Stream(std::uint64_t number);

 private:
  // Consecutive objects of a table. Entries have the same length.
  struct Range {
    std::uint64_t first = 0;
    std::uint64_t count = 0;
    std::uint64_t entries = 0;  // offset in the file, or in the section's data
  };
  struct Section {
    std::string trailer;
    std::vector<Range> ranges;
    std::string data;                     // of a cross-reference stream; else empty
    std::uint64_t widths[3] = {0, 0, 0};  // of the fields of its entries
  };
  struct Location {
    std::uint64_t offset = 0;
    std::uint64_t container = 0;  // the number of an object stream; 0 for an object in the file
    std::uint64_t index = 0;
  };

  bool ReadSection(std::uint64_t offset);
  bool ReadTable(std::uint64_t at, Section& section);
  bool ReadXrefStream(std::uint64_t offset, Section& section);
  std::optional<Location> Locate(std::uint64_t number);
  std::optional<Location> LocateIn(const Section& section, std::uint64_t entry);
  std::string TextAt(std::uint64_t offset);
  std::string ObjectInStream(const Location& location);
  std::string StreamAt(std::uint64_t offset, std::string& dictionary);

  FileWindow& file_;
  std::uint64_t base_;
  std::vector<Section> sections_;
  std::uint64_t tableBytes_ = 0;
  bool resolving_ = false;  // while the length of a stream is read
};

}  // namespace Sorvik::xmp
