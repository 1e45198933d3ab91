// SPDX-License-Identifier: MIT
#include "xmp/readers/PlainXMPReader.h"

#include "foundation/ByteReader.h"
#include "foundation/XmlTree.h"

namespace Sorvik::xmp {
namespace {

bool Recognises(const ReaderInput& input) { return IsPlainXMP(input.path); }

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  // One byte above the limit, so that a larger file is refused and not cut.
  const auto bytes = input.file.Read(0, foundation::XmlLimits().bytes + 1);
  output.packet = foundation::ByteReader(bytes).Text();
}

}  // namespace

const Reader kPlainXMPReader = {"XMP", Recognises, Read};

bool IsPlainXMP(std::string_view path) noexcept {
  return path.ends_with(".xmp") || path.ends_with(".XMP") || path.ends_with(".Xmp");
}

}  // namespace Sorvik::xmp
