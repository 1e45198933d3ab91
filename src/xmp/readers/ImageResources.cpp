// SPDX-License-Identifier: MIT
#include "xmp/readers/ImageResources.h"

#include "xmp/readers/ExifTags.h"
#include "xmp/readers/IptcRecords.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

constexpr std::string_view kSignature = "8BIM";
constexpr std::uint16_t kIptc = 1028;
constexpr std::uint16_t kExif = 1058;
constexpr std::uint16_t kXMP = 1060;
// Files have fewer than 100.
constexpr unsigned kMaxResources = 4096;

}  // namespace

void ReadImageResources(ByteReader resources, ReaderOutput& output) {
  std::uint64_t at = 0;
  for (unsigned i = 0; i < kMaxResources && resources.Matches(at, kSignature); ++i) {
    // Signature, id, a Pascal string padded to even length, size, data padded to even length.
    const auto id = resources.U16BE(at + 4);
    const auto nameLength = resources.U8(at + 6);
    if (!id || !nameLength) return;
    at += 6 + ((*nameLength + std::uint64_t{2}) & ~std::uint64_t{1});
    const auto size = resources.U32BE(at);
    if (!size) return;
    const auto data = resources.Sub(at + 4, *size);
    if (!data) return;
    if (*id == kXMP && output.packet.empty()) {
      output.packet = data->Text();
    } else if (*id == kExif) {
      TXMPMeta exif;
      output.hasNative |= SetExifBlock(*data, exif);
      output.native.FillFrom(exif);
    } else if (*id == kIptc) {
      output.hasNative |= SetIptcRecords(*data, output.native);
    }
    at += 4 + *size + (*size & 1);
  }
}

}  // namespace Sorvik::xmp
