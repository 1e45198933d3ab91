// SPDX-License-Identifier: MIT
// The directory of tags in the head of a RED segment. Facts: the tables of public readers.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/ByteReader.h"

namespace Sorvik::xmp {

class R3dDirectory {
 public:
  // Reads the directory whose length is at `offset`. If there is none, searches for one that starts
  // with a known first entry.
  R3dDirectory(foundation::ByteReader head, std::uint64_t offset);

  // Returns the text of a tag, as readers store it; empty if it is missing.
  std::string Text(std::uint16_t tag) const;
  std::optional<float> Float(std::uint16_t tag) const;

 private:
  struct Entry {
    std::uint16_t tag;
    foundation::ByteReader data;
  };
  void ReadEntries(foundation::ByteReader bytes);
  const Entry* Find(std::uint16_t tag) const;

  std::vector<Entry> entries_;
};

}  // namespace Sorvik::xmp
