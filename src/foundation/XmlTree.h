// SPDX-License-Identifier: MIT
// A small element tree over expat for the XML that cameras and XMP writers leave. Documents that
// declare entities are refused, so none is ever expanded and nothing is fetched; size, depth and
// number of nodes are capped. Any thread; a document belongs to whoever made it.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Sorvik::foundation {

struct XmlAttribute {
  std::string nameSpace;  // empty for none
  std::string name;       // local name
  std::string value;
};

// An element. The look-ups of children and attributes go by local name, whatever the namespace:
// cameras write the same records with differing ones and with none.
class XmlElement {
 public:
  const std::string& Name() const noexcept { return name_; }
  const std::string& NameSpace() const noexcept { return nameSpace_; }
  // The character data directly in this element, as it stands.
  const std::string& RawText() const noexcept { return text_; }
  // The same without white space at its ends.
  std::string_view Text() const noexcept;
  const std::vector<const XmlElement*>& Children() const noexcept { return children_; }
  const std::vector<XmlAttribute>& Attributes() const noexcept { return attributes_; }

  // The first child of that local name; null if there is none.
  const XmlElement* Child(std::string_view name) const noexcept;
  // The descendant at the end of a path of first children; null if one is missing.
  const XmlElement* Find(std::initializer_list<std::string_view> names) const noexcept;
  // All children of that local name, in document order.
  std::vector<const XmlElement*> ChildrenNamed(std::string_view name) const;
  // The text of the first child of that name; empty if there is none.
  std::string_view TextOf(std::string_view childName) const noexcept;
  // The attribute's value; empty if there is none.
  std::string_view Attribute(std::string_view name) const noexcept;
  const XmlAttribute* FindAttribute(std::string_view nameSpace,
                                    std::string_view name) const noexcept;

 private:
  friend class XmlBuilder;

  std::string nameSpace_;
  std::string name_;
  std::string text_;
  std::vector<XmlAttribute> attributes_;
  std::vector<const XmlElement*> children_;
};

struct XmlLimits {
  std::size_t bytes = std::size_t{16} << 20;
  std::size_t depth = 256;
  std::size_t nodes = 500'000;  // elements and attributes together
  std::size_t nameSpace = 256;  // bytes of a namespace, which every name in it repeats
};

class XmlDocument {
 public:
  const XmlElement& Root() const noexcept { return elements_.front(); }

 private:
  friend class XmlBuilder;
  std::deque<XmlElement> elements_;  // never move while the tree grows
};

// The tree of a document in UTF-8, UTF-16 or UTF-32 (by byte order mark, by the look of the first
// bytes). Nothing if it isn't well-formed or goes beyond the limits; what stands behind the root
// element doesn't count.
std::optional<XmlDocument> ParseXml(std::string_view bytes, const XmlLimits& limits = {});

// The same of a regular file; nothing if it can't be read or is larger than the limit.
std::optional<XmlDocument> ReadXmlFile(const std::string& path, const XmlLimits& limits = {});

}  // namespace Sorvik::foundation
