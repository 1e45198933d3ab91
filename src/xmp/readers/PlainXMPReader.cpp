// SPDX-License-Identifier: MIT
#include "xmp/readers/PlainXMPReader.h"

#include <algorithm>
#include <string_view>

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
  constexpr std::string_view kExtension = ".xmp";
  if (path.size() < kExtension.size()) return false;
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::equal(kExtension.begin(), kExtension.end(), path.end() - kExtension.size(),
                    [&](char a, char b) { return a == lower(b); });
}

}  // namespace Sorvik::xmp
