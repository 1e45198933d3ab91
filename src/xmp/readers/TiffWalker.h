// SPDX-License-Identifier: MIT
// Tag directories of TIFF files and of the Exif blocks of JPEG, PNG and WebP files.
//
// Facts: TIFF 6.0, section 2; BigTIFF; Exif 2.32, 4.6. Offsets count from the start of the TIFF.
// Directories are read on request, one level at a time, and the chain of further directories isn't
// followed, so cycles are harmless.
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
  std::uint64_t count = 0;   // number of values, not bytes
  std::uint64_t offset = 0;  // of the first value, which may be inside the entry itself
};

// RATIONAL, or SRATIONAL with the sign stored separately.
struct TiffRatio {
  std::uint32_t num = 0;
  std::uint32_t den = 0;
  bool negative = false;
};

// The tags of one directory, in file order.
class TiffDirectory {
 public:
  // Returns the first tag of that number; null if there is none.
  const TiffTag* Find(std::uint16_t id) const noexcept;
  bool Empty() const noexcept { return tags_.empty(); }

 private:
  friend class TiffWalker;
  std::vector<TiffTag> tags_;
};

class TiffWalker {
 public:
  // Returns nullopt if `file`, which must outlive the walker, doesn't start with a TIFF header.
  static std::optional<TiffWalker> Open(FileWindow& file);
  // A structure of directories without a header, such as the maker notes of some cameras. `first`
  // is the offset of the first directory in `file`.
  static TiffWalker WithoutHeader(FileWindow& file, bool bigEndian, std::uint64_t first);
  // TIFF, BigTIFF, and the raw files of cameras that use another version number.
  static bool IsTiff(foundation::ByteReader head) noexcept;
  bool BigEndian() const noexcept { return bigEndian_; }

  // The first directory, and the one at `offset`. Tags that extend past the end of the file are
  // dropped; a missing directory is empty.
  TiffDirectory First() { return Read(first_); }
  TiffDirectory Read(std::uint64_t offset);
  // Returns the directory that the tag's value points to; empty if there is none.
  TiffDirectory Sub(const TiffDirectory& directory, std::uint16_t id, std::uint64_t index = 0);

  // Values. Each returns nullopt if the tag is missing, has another type or is too short.
  // BYTE, SHORT, LONG, IFD and their BigTIFF forms; a RATIONAL with an integer value.
  std::optional<std::uint64_t> Number(const TiffDirectory& directory, std::uint16_t id,
                                      std::uint64_t index = 0);
  std::optional<TiffRatio> Ratio(const TiffDirectory& directory, std::uint16_t id,
                                 std::uint64_t index = 0);
  // Returns ASCII or BYTE text as readers store it (see NativeText.h); empty if there is none.
  std::string Text(const TiffDirectory& directory, std::uint16_t id);
  // Returns the value's unmodified bytes; empty if it is longer than `maxBytes`.
  std::string Bytes(const TiffDirectory& directory, std::uint16_t id, std::uint64_t maxBytes);
  // Same for any type, truncated to `maxBytes`: some writers store bytes with the type LONG.
  std::string Head(const TiffDirectory& directory, std::uint16_t id, std::uint64_t maxBytes);

 private:
  explicit TiffWalker(FileWindow& file) : file_(&file) {}
  void ReadEntries(foundation::ByteReader entries, std::uint64_t start, TiffDirectory& directory);

  FileWindow* file_;
  bool bigEndian_ = false;
  bool big_ = false;  // BigTIFF: counts and offsets of 8 bytes
  std::uint64_t first_ = 0;
};

}  // namespace Sorvik::xmp
