// SPDX-License-Identifier: MIT
#include "xmp/readers/SvgReader.h"

#include "foundation/XmlTree.h"
#include "xmp/readers/CameraXml.h"

namespace Sorvik::xmp {

namespace {

// Files have one; the limit bounds the time for malformed files.
constexpr unsigned kMaxCandidates = 8;

// Returns the first complete element with that local name, in any prefix, as text; empty if there
// is none. Searches the text, because a drawing may be far larger than its metadata.
std::string_view ElementText(std::string_view document, std::string_view localName) {
  std::size_t at = document.find(localName);
  for (unsigned i = 0; i < kMaxCandidates && at != document.npos; ++i) {
    const std::size_t begin = document.rfind('<', at);
    const std::size_t nameEnd = at + localName.size();
    if (begin != document.npos) {
      const std::string_view name = document.substr(begin + 1, nameEnd - begin - 1);
      const std::string endTag = std::string("</").append(name).append(">");
      const bool isName = name.find_first_of(" \t\r\n/=>") == name.npos;
      const std::size_t end = isName ? document.find(endTag, at) : document.npos;
      if (end != document.npos) return document.substr(begin, end + endTag.size() - begin);
    }
    at = document.find(localName, nameEnd);
  }
  return {};
}

bool Recognises(const ReaderInput& input) { return XmlRootName(input.head) == "svg"; }

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  const auto bytes = input.file.Read(0, foundation::XmlLimits().bytes);
  output.packet = ElementText(foundation::ByteReader(bytes).Text(), "xmpmeta");
}

}  // namespace

const Reader kSvgReader = {"SVG", Recognises, Read};

}  // namespace Sorvik::xmp
