// SPDX-License-Identifier: MIT
// Camera XML as an element tree, within its limits and in all encodings.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/XmlTree.h"

namespace {

using namespace Sorvik::foundation;

void Check(bool holds) {
  if (!holds) std::abort();
}

constexpr XmlLimits kLimits = {.bytes = 64 * 1024, .depth = 40, .nodes = 1000};

// Counts elements and attributes, and finds each child by name.
std::size_t Walk(const XmlElement& root) {
  struct Place {
    const XmlElement* element;
    std::size_t depth;
  };
  std::size_t nodes = 0;
  std::vector<Place> open{{&root, 1}};
  while (!open.empty()) {
    const Place place = open.back();
    open.pop_back();
    Check(place.depth <= kLimits.depth);
    nodes += 1 + place.element->Attributes().size();
    for (const XmlAttribute& attribute : place.element->Attributes()) {
      Check(place.element->FindAttribute(attribute.nameSpace, attribute.name) != nullptr);
    }
    Check(place.element->Text().size() <= place.element->RawText().size());
    for (const XmlElement* child : place.element->Children()) {
      Check(place.element->Child(child->Name()) != nullptr);
      open.push_back({child, place.depth + 1});
    }
  }
  return nodes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const std::string normal = NormalizeXml(text.substr(0, kLimits.bytes));
  Check(NormalizeXml(normal).size() <= normal.size());
  const auto document = ParseXml(text, kLimits);
  if (document) {
    Check(size <= kLimits.bytes);
    Check(Walk(document->Root()) <= kLimits.nodes);
  }
  return 0;
}
