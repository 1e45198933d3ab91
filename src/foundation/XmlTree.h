// SPDX-License-Identifier: MIT
// A small element tree, parsed by expat, for XML files of cameras and XMP. Documents with entity
// declarations are rejected (XXE, entity expansion); size, depth and number of nodes are limited.
// Any thread; a document is immutable.
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

// An element. Children and attributes are looked up by local name in any namespace: cameras write
// the same records in different namespaces and in none.
class XmlElement {
 public:
  const std::string& Name() const noexcept { return name_; }
  const std::string& NameSpace() const noexcept { return nameSpace_; }
  // The character data directly in this element.
  const std::string& RawText() const noexcept { return text_; }
  // The same without leading and trailing white space.
  std::string_view Text() const noexcept;
  const std::vector<const XmlElement*>& Children() const noexcept { return children_; }
  const std::vector<XmlAttribute>& Attributes() const noexcept { return attributes_; }

  // The first child with the local name `name`; nullptr if there is none.
  const XmlElement* Child(std::string_view name) const noexcept;
  // The descendant at a path of local names, following first children; nullptr if it is missing.
  const XmlElement* Find(std::initializer_list<std::string_view> names) const noexcept;
  // All children with the local name `name`, in document order.
  std::vector<const XmlElement*> ChildrenNamed(std::string_view name) const;
  // The text of the first child with that name; empty if there is none.
  std::string_view TextOf(std::string_view childName) const noexcept;
  // The value of the attribute; empty if there is none.
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
  std::size_t nameSpace = 256;  // bytes of a namespace URI; every name in it has a copy
};

class XmlDocument {
 public:
  const XmlElement& Root() const noexcept { return elements_.front(); }

 private:
  friend class XmlBuilder;
  std::deque<XmlElement> elements_;  // a deque: elements must not move
};

// Parses a document in any encoding that ToUTF8 detects. Returns nullopt if it isn't well-formed or
// exceeds the limits. Ignores everything after the root element.
std::optional<XmlDocument> ParseXml(std::string_view bytes, const XmlLimits& limits = {});

// Why a file that can be read is no document, for reports.
inline constexpr std::string_view kMalformedXml = "not well-formed XML";

// Parses a regular file. Returns nullopt in the same cases, or if the file can't be read, and
// reports a file that exists and can't be parsed.
std::optional<XmlDocument> ReadXmlFile(const std::string& path, const XmlLimits& limits = {});

// Returns a document as a strict parser accepts it: in UTF-8, without XML declaration, blanks in
// front of it, and anything after the root element. For files of writers that declare another
// encoding than they use or append to an older file. Other faults stay.
std::string NormalizeXml(std::string_view bytes);

}  // namespace Sorvik::foundation
