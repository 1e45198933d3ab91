// SPDX-License-Identifier: MIT
// The elements of EBML documents, the structure of Matroska and WebM files.
// Facts: RFC 8794.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "xmp/readers/FileWindow.h"

namespace Sorvik::xmp {

struct EbmlElement {
  std::uint32_t id = 0;      // with its length marker, as in the standard
  std::uint64_t body = 0;    // offset in the file
  std::uint64_t end = 0;     // never past the end of the parent
  bool unknownSize = false;  // of live streams: extends to the next element of the same level

  std::uint64_t Size() const noexcept { return end - body; }
};

// Iterates over the elements in a range of a file.
class EbmlElements {
 public:
  EbmlElements(FileWindow& file, std::uint64_t begin, std::uint64_t end)
      : file_(file), next_(begin), end_(end) {}
  EbmlElements(FileWindow& file, const EbmlElement& parent)
      : EbmlElements(file, parent.body, parent.end) {}

  // Returns the next element; nullopt at the end, at invalid ids and sizes, and after the maximum
  // number of elements.
  std::optional<EbmlElement> Next();

 private:
  static constexpr unsigned kMaxElements = 4096;

  FileWindow& file_;
  std::uint64_t next_;
  std::uint64_t end_;
  unsigned elements_ = 0;
};

// The values of elements. Values of invalid sizes are 0 or empty.
std::uint64_t EbmlUnsigned(FileWindow& file, const EbmlElement& element);
double EbmlFloat(FileWindow& file, const EbmlElement& element);
std::string EbmlText(FileWindow& file, const EbmlElement& element);

}  // namespace Sorvik::xmp
