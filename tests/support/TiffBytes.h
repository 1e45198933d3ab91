// SPDX-License-Identifier: MIT
// Builds TIFF files and Exif blocks tag by tag, in either byte order.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/Bytes.h"

namespace sorvik_test {

struct TiffEntry {
  std::uint16_t tag;
  std::uint16_t type;
  std::uint32_t count;
  std::string value;  // in the byte order of the file
};

class TiffBytes {
 public:
  explicit TiffBytes(bool bigEndian = true) : bigEndian_(bigEndian) {}

  TiffEntry Ascii(std::uint16_t tag, std::string text) const {
    text.push_back('\0');
    return {tag, 2, static_cast<std::uint32_t>(text.size()), text};
  }
  TiffEntry Raw(std::uint16_t tag, std::uint16_t type, const std::string& bytes) const {
    return {tag, type, static_cast<std::uint32_t>(bytes.size()), bytes};
  }
  TiffEntry Shorts(std::uint16_t tag, const std::vector<unsigned>& values) const {
    Bytes b;
    for (const unsigned v : values) Short(b, v);
    return {tag, 3, static_cast<std::uint32_t>(values.size()), b.str()};
  }
  TiffEntry Long(std::uint16_t tag, std::uint32_t value) const {
    Bytes b;
    Long(b, value);
    return {tag, 4, 1, b.str()};
  }
  TiffEntry Ratios(std::uint16_t tag, const std::vector<std::pair<std::uint32_t, std::uint32_t>>& v,
                   std::uint16_t type = 5) const {
    Bytes b;
    for (const auto& [num, den] : v) {
      Long(b, num);
      Long(b, den);
    }
    return {tag, type, static_cast<std::uint32_t>(v.size()), b.str()};
  }

  // The header and the directories in sequence. The first directory has a pointer to each of the
  // others, under the tag given with it.
  std::string File(std::vector<TiffEntry> first,
                   const std::vector<std::pair<std::uint16_t, std::vector<TiffEntry>>>& subs = {}) {
    std::size_t next = 8 + DirectorySize(first) + 12 * subs.size();
    for (const auto& [tag, entries] : subs) {
      first.push_back(Long(tag, static_cast<std::uint32_t>(next)));
      next += DirectorySize(entries);
    }
    Bytes b;
    b.Text(bigEndian_ ? "MM" : "II");
    Short(b, 42);
    Long(b, 8);
    AddDirectory(b, first);
    for (const auto& sub : subs) AddDirectory(b, sub.second);
    return b.str();
  }

  // One directory at offset `at`, without a header.
  std::string DirectoryAt(const std::vector<TiffEntry>& entries, std::size_t at) const {
    Bytes b;
    AddDirectory(b, entries, at);
    return b.str();
  }

 private:
  static std::size_t DirectorySize(const std::vector<TiffEntry>& entries) {
    std::size_t size = 2 + 12 * entries.size() + 4;
    for (const TiffEntry& entry : entries) {
      if (entry.value.size() > 4) size += entry.value.size();
    }
    return size;
  }
  void Short(Bytes& b, unsigned v) const { bigEndian_ ? b.U16(v) : b.U16LE(v); }
  void Long(Bytes& b, std::uint32_t v) const { bigEndian_ ? b.U32(v) : b.U32LE(v); }
  // `base` is the offset of the start of `b`.
  void AddDirectory(Bytes& b, const std::vector<TiffEntry>& entries, std::size_t base = 0) const {
    Bytes values;
    const std::size_t valuesAt = base + b.size() + 2 + 12 * entries.size() + 4;
    Short(b, static_cast<unsigned>(entries.size()));
    for (const TiffEntry& entry : entries) {
      Short(b, entry.tag);
      Short(b, entry.type);
      Long(b, entry.count);
      if (entry.value.size() <= 4) {
        b.Add(Bytes(entry.value).PadTo(4));
      } else {
        Long(b, static_cast<std::uint32_t>(valuesAt + values.size()));
        values.Text(entry.value);
      }
    }
    Long(b, 0);  // no next directory
    b.Add(values);
  }

  bool bigEndian_;
};

}  // namespace sorvik_test
