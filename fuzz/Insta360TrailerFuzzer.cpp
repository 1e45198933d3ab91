// SPDX-License-Identifier: MIT
// The records at the end of an Insta360 file.
#include <cstdint>
#include <span>

#include "FuzzReader.h"
#include "xmp/readers/Insta360Trailer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Sorvik::xmp;
  constexpr int kMaxReads = 40;
  const Sorvik::foundation::ByteReader bytes(std::as_bytes(std::span(data, size)));
  const sorvik_fuzz::BoundedFile file(bytes, kMaxReads);
  const ReaderInput input{"a.insv", file, bytes.Clip(0, 0)};
  FileWindow window(input, 1);
  TXMPMeta meta;
  SetInsta360Trailer(window, WantedProperties::All(), meta);
  return 0;
}
