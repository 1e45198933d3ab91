// SPDX-License-Identifier: MIT
#include "xmp/readers/PsdReader.h"

#include "xmp/NativeValues.h"
#include "xmp/readers/FileWindow.h"
#include "xmp/readers/ImageResources.h"
#include "xmp/readers/PictureSize.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Facts: the published description of the PSD file format. The header is followed by the
// sections "color mode data" and "image resources", each with its length.
constexpr std::uint64_t kHeaderLength = 26;

bool Recognises(const ReaderInput& input) {
  const auto version = input.head.U16BE(4);
  return input.head.Matches(0, "8BPS") && (version == 1 || version == 2);
}

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (!Recognises(input) || !input.head.Holds(0, kHeaderLength)) return;
  FileWindow file(input);
  const std::uint64_t resources =
      kHeaderLength + 4 + file.At(kHeaderLength, 4).U32BE(0).value_or(0);
  const std::uint64_t length = file.At(resources, 4).U32BE(0).value_or(0);
  ReadImageResources(file.At(resources + 4, length), output);
  // The layers are upright, whatever the orientation of the original picture in the Exif block.
  SetPictureSize(output.native, *input.head.U32BE(18), *input.head.U32BE(14));
  SetPixelDepth(output.native, *input.head.U16BE(22));
  output.hasNative = true;
}

}  // namespace

const Reader kPsdReader = {"PSD", Recognises, Read};

}  // namespace Sorvik::xmp
