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
  // Reads the directory whose length word stands at `offset`; where none is there, the one that
  // begins further on with one of the tags that always come first.
  R3dDirectory(foundation::ByteReader head, std::uint64_t offset);

  // The text of a tag, as readers store it; empty if there is none.
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
