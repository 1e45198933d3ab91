// SPDX-License-Identifier: MIT
#include "xmp/readers/PlainXMPReader.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "foundation/ByteReader.h"
#include "foundation/XmlTree.h"
#include "xmp/readers/CameraXml.h"

namespace Sorvik::xmp {
namespace {

// The document element of serialised XMP, and its name in the oldest files. Such a file may have
// any name, and needs no packet wrapper for a scan to find.
bool Recognises(const ReaderInput& input) {
  if (IsPlainXMP(input.path)) return true;
  const std::string root = XmlRootName(input.head);
  return root == "xmpmeta" || root == "xapmeta";
}

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  // One byte above the limit, so that a larger file is rejected instead of truncated.
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
