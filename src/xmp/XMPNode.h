// SPDX-License-Identifier: MIT
// A node of the XMP data model: a property, a field, an array item or a qualifier. A tree of nodes
// is a value; its depth is that of the XML it was read from, which is capped.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "xmp/XMPMeta.h"

namespace Sorvik::xmp {

enum class NodeForm { kSimple, kStruct, kArray };

struct XMPNode {
  std::string nameSpace;  // empty for an item
  std::string name;       // local name; empty for an item
  std::string value;      // of a simple node, unmodified
  NodeForm form = NodeForm::kSimple;
  ArrayForm arrayForm = ArrayForm::kBag;
  std::vector<XMPNode> children;  // fields or items
  std::vector<XMPNode> qualifiers;

  friend bool operator==(const XMPNode&, const XMPNode&) = default;

  bool Is(std::string_view ns, std::string_view local) const noexcept {
    return name == local && nameSpace == ns;
  }
  bool IsArray(ArrayForm wanted) const noexcept {
    return form == NodeForm::kArray && arrayForm == wanted;
  }
};

// Returns the xml:lang of a node; empty if it has none.
std::string_view LanguageOf(const XMPNode& node) noexcept;

// Sorts properties by name and keeps the first of duplicates.
void SortProperties(std::vector<XMPNode>& properties);

}  // namespace Sorvik::xmp
