// SPDX-License-Identifier: MIT
#include "xmp/readers/BmpReader.h"

#include "xmp/readers/PictureSize.h"
#include "xmp/readers/ScanReader.h"

namespace Sorvik::xmp {

namespace {

constexpr std::uint64_t kHeaderLength = 14;
constexpr std::uint64_t kWidth = 18;
constexpr std::uint64_t kHeight = 22;  // negative for top-down rows

// The lengths of the headers that exist.
bool Recognises(const ReaderInput& input) {
  const std::uint32_t length = input.head.U32LE(kHeaderLength).value_or(0);
  return input.head.Matches(0, "BM") && length >= 40 && length <= 124;
}

// The format has no place for XMP, so programs append it.
void Read(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output) {
  if (!Recognises(input)) return;
  kScanReader.read(input, wanted, output);
  const std::uint32_t width = input.head.U32LE(kWidth).value_or(0);
  const std::uint32_t height = input.head.U32LE(kHeight).value_or(0);
  const bool topDown = (height & 0x80000000) != 0;
  SetPictureSize(output.native, width, topDown ? ~height + 1 : height);
  output.hasNative = !output.native.Empty();
}

}  // namespace

const Reader kBmpReader = {"BMP", Recognises, Read};

}  // namespace Sorvik::xmp
