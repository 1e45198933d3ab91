// SPDX-License-Identifier: MIT
#include "xmp/readers/RafReader.h"

#include <optional>

#include "xmp/Namespaces.h"
#include "xmp/readers/EmbeddedJpeg.h"
#include "xmp/readers/FileWindow.h"
#include "xmp/readers/NativeText.h"
#include "xmp/readers/PictureSize.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Facts: no public description by the maker; the layout was derived from the tables that
// independent readers publish. Big-endian.
constexpr std::string_view kSignature = "FUJIFILMCCD-RAW ";
constexpr std::uint64_t kModel = 28;
constexpr std::uint64_t kModelLength = 32;
constexpr std::uint64_t kPreview = 84;    // offset and length of the JPEG
constexpr std::uint64_t kDirectory = 92;  // offset of the records
constexpr std::uint16_t kCroppedSize = 0x111;
// Cameras write about a dozen.
constexpr std::uint64_t kMaxRecords = 256;

struct Size {
  std::uint16_t height = 0;
  std::uint16_t width = 0;
};

// Records of a tag, a length and data, after their number.
std::optional<Size> CroppedSize(FileWindow& file, std::uint64_t directory) {
  const std::uint64_t count = file.At(directory, 4).U32BE(0).value_or(0);
  std::uint64_t at = directory + 4;
  for (std::uint64_t i = 0; i < count && i < kMaxRecords; ++i) {
    const ByteReader record = file.At(at, 8);
    const auto length = record.U16BE(2);
    if (!length) return std::nullopt;
    if (record.U16BE(0) == kCroppedSize) {
      return Size{record.U16BE(4).value_or(0), record.U16BE(6).value_or(0)};
    }
    at += std::uint64_t{4} + *length;
  }
  return std::nullopt;
}

bool Recognises(const ReaderInput& input) { return input.head.Matches(0, kSignature); }

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (!Recognises(input)) return;
  FileWindow file(input);
  const std::uint64_t preview = input.head.U32BE(kPreview).value_or(0);
  const std::uint64_t length = input.head.U32BE(kPreview + 4).value_or(0);
  const auto size = CroppedSize(file, input.head.U32BE(kDirectory).value_or(0));
  const auto orientation = AddEmbeddedJpeg(input.file, preview, length, output);
  // The preview may be smaller.
  if (size) SetPictureSize(output.native, size->width, size->height, orientation);

  TXMPMeta header;
  header.SetProperty(kNsTIFF, "Model", NativeText(input.head.CStringAt(kModel, kModelLength)));
  output.hasNative |= !header.Empty() || size.has_value();
  output.native.FillFrom(header);
}

}  // namespace

const Reader kRafReader = {"RAF", Recognises, Read};

}  // namespace Sorvik::xmp
