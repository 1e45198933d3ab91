// SPDX-License-Identifier: MIT
// Directories of tags as TIFF files have them, and the Exif blocks of JPEG, PNG and WebP files.
//
// Facts: TIFF 6.0, section 2; BigTIFF; Exif 2.32, 4.6. Offsets count from the start of the TIFF.
// Directories are read when asked for, one level at a time, and the chain of further ones isn't
// followed: no loop of directories can make work.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xmp/readers/FileWindow.h"

namespace Sorvik::xmp {

struct TiffTag {
  std::uint16_t id = 0;
  std::uint16_t type = 0;
  std::uint64_t count = 0;   // of values, not bytes
  std::uint64_t offset = 0;  // of the first value, also where it stands in the entry itself
};

// RATIONAL, or SRATIONAL where the file says so: the sign is apart.
struct TiffRatio {
  std::uint32_t num = 0;
  std::uint32_t den = 0;
  bool negative = false;
};

// The tags of one directory, in file order.
class TiffDirectory {
 public:
  // The first tag of that number; null if there is none.
  const TiffTag* Find(std::uint16_t id) const noexcept;
  bool Empty() const noexcept { return tags_.empty(); }

 private:
  friend class TiffWalker;
  std::vector<TiffTag> tags_;
};

class TiffWalker {
 public:
  // Nothing if no TIFF header stands at the start of `file`, which must outlive the walker.
  static std::optional<TiffWalker> Open(FileWindow& file);
  static bool IsTiff(foundation::ByteReader head) noexcept;
  bool BigEndian() const noexcept { return bigEndian_; }

  // The first directory, and the one at `offset`. Tags that run past the end of the file are left
  // out; a directory that isn't there is empty.
  TiffDirectory First() { return Read(first_); }
  TiffDirectory Read(std::uint64_t offset);
  // The directory that the tag's value points to; empty if there is none.
  TiffDirectory Sub(const TiffDirectory& directory, std::uint16_t id, std::uint64_t index = 0);

  // Values. Each gives nothing if the tag isn't there, is of another kind or too short.
  // BYTE, SHORT, LONG, IFD and their BigTIFF forms; a RATIONAL that is a whole number.
  std::optional<std::uint64_t> Number(const TiffDirectory& directory, std::uint16_t id,
                                      std::uint64_t index = 0);
  std::optional<TiffRatio> Ratio(const TiffDirectory& directory, std::uint16_t id,
                                 std::uint64_t index = 0);
  // ASCII or BYTE text as readers store it (see NativeText.h); empty if there is none.
  std::string Text(const TiffDirectory& directory, std::uint16_t id);
  // The value's bytes as they stand, at most `most`; empty if it is longer.
  std::string Bytes(const TiffDirectory& directory, std::uint16_t id, std::uint64_t most);

 private:
  explicit TiffWalker(FileWindow& file) : file_(&file) {}
  void ReadEntries(foundation::ByteReader entries, std::uint64_t start, TiffDirectory& directory);

  FileWindow* file_;
  bool bigEndian_ = false;
  bool big_ = false;  // BigTIFF: counts and offsets of 8 bytes
  std::uint64_t first_ = 0;
};

}  // namespace Sorvik::xmp
