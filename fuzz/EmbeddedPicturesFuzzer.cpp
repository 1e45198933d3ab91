// SPDX-License-Identifier: MIT
// Pictures inside of media files: boxes and directories that lead to a JPEG.
#include "FuzzReader.h"
#include "metadata/EmbeddedPictures.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr int kMaxReads = 96;
  constexpr std::size_t kShortHead = 256;
  const Sorvik::foundation::ByteReader bytes(std::as_bytes(std::span(data, size)));
  for (const std::size_t headSize : {Sorvik::xmp::kHeadSize, kShortHead}) {
    const sorvik_fuzz::BoundedFile file(bytes, kMaxReads);
    const auto found = Sorvik::FindEmbeddedPictures({"", file, bytes.Clip(0, headSize)});
    sorvik_fuzz::Check(found.orientation >= 1 && found.orientation <= 8);
    for (const auto& picture : found.pictures) {
      sorvik_fuzz::Check(bytes.Holds(picture.offset, picture.length));
    }
  }
  return 0;
}
