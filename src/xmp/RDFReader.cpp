// SPDX-License-Identifier: MIT
#include "xmp/RDFReader.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <utility>

#include "xmp/Namespaces.h"

namespace Sorvik::xmp {
namespace {

using foundation::XmlAttribute;
using foundation::XmlElement;

// References by rdf:nodeID can multiply the content of a document. Real packets repeat a record or
// two; content beyond these limits is dropped.
constexpr std::size_t kMaxReferencedBytes = std::size_t{4} << 20;
constexpr std::size_t kMaxReferenceDepth = 8;

// Approximate memory of an element without its children.
std::size_t EstimatedSize(const XmlElement& element) {
  std::size_t size = sizeof(XMPNode) + element.RawText().size();
  for (const XmlAttribute& attribute : element.Attributes()) {
    size += sizeof(XMPNode) + attribute.nameSpace.size() + attribute.value.size();
  }
  return size;
}

bool IsRDF(const XmlElement& element, std::string_view name) {
  return element.Name() == name && element.NameSpace() == kNsRDF;
}

// Some old writers use this URI for Dublin Core.
std::string_view CanonicalNameSpace(std::string_view nameSpace) {
  return nameSpace == "http://purl.org/dc/1.1/" ? std::string_view(kNsDC) : nameSpace;
}

// Whether an attribute is a property, field or qualifier. Attributes without a namespace are RDF
// attributes of the oldest syntax ("about", "ID").
bool IsPropertyAttribute(const XmlAttribute& attribute) {
  return !attribute.nameSpace.empty() && attribute.nameSpace != kNsRDF &&
         attribute.nameSpace != kNsXML;
}

XMPNode SimpleNode(std::string_view nameSpace, std::string_view name, std::string value) {
  XMPNode node;
  node.nameSpace = CanonicalNameSpace(nameSpace);
  node.name = name;
  node.value = std::move(value);
  return node;
}

std::vector<XMPNode> PropertiesInAttributes(const XmlElement& element) {
  std::vector<XMPNode> properties;
  for (const XmlAttribute& attribute : element.Attributes()) {
    if (!IsPropertyAttribute(attribute)) continue;
    properties.push_back(SimpleNode(attribute.nameSpace, attribute.name, attribute.value));
  }
  return properties;
}

// Sets the array form of a container element. Returns false if the element isn't one.
bool ArrayFormOf(const XmlElement& element, ArrayForm& form) {
  if (element.NameSpace() != kNsRDF) return false;
  if (element.Name() == "Bag") {
    form = ArrayForm::kBag;
  } else if (element.Name() == "Seq") {
    form = ArrayForm::kSeq;
  } else if (element.Name() == "Alt") {
    form = ArrayForm::kAlt;
  } else {
    return false;
  }
  return true;
}

// Matches "rdf:li", and "rdf:_1", "rdf:_2" and so on of general RDF.
bool IsItem(const XmlElement& element) {
  return element.NameSpace() == kNsRDF &&
         (element.Name() == "li" || element.Name().starts_with('_'));
}

void Append(std::vector<XMPNode>& to, std::vector<XMPNode> more) {
  to.insert(to.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

// Recursive: the depth of the XML is capped, and so is the depth of references.
class Reader {
 public:
  explicit Reader(const XmlElement& rdf) {
    for (const XmlElement* node : rdf.Children()) {
      if (const XmlAttribute* id = node->FindAttribute(kNsRDF, "nodeID")) {
        nodes_.emplace(id->value, node);
      }
    }
  }

  // Reads the properties of a node element: its attributes and its property elements.
  std::vector<XMPNode> ReadProperties(const XmlElement& node) {
    std::vector<XMPNode> properties = PropertiesInAttributes(node);
    for (const XmlElement* child : node.Children()) {
      if (child->NameSpace().empty() || child->NameSpace() == kNsRDF) continue;
      properties.push_back(ReadProperty(*child));
    }
    return properties;
  }

 private:
  XMPNode ReadProperty(const XmlElement& element) {
    XMPNode node = ReadValue(element);
    node.nameSpace = CanonicalNameSpace(element.NameSpace());
    node.name = element.Name();
    return node;
  }

  // Reads the value of a property element or item.
  XMPNode ReadValue(const XmlElement& element) {
    if (depth_ > 0) referenced_ += EstimatedSize(element);
    if (referenced_ > kMaxReferencedBytes) return XMPNode();
    XMPNode node = ReadUnqualifiedValue(element);
    if (const XmlAttribute* language = element.FindAttribute(kNsXML, "lang")) {
      node.qualifiers.insert(node.qualifiers.begin(), SimpleNode(kNsXML, "lang", language->value));
    }
    return node;
  }

  XMPNode ReadUnqualifiedValue(const XmlElement& element) {
    const XmlAttribute* parseType = element.FindAttribute(kNsRDF, "parseType");
    if (parseType != nullptr && parseType->value == "Resource") return ReadNode(element);
    const bool literal =
        parseType != nullptr || element.FindAttribute(kNsRDF, "datatype") != nullptr;
    if (literal) return SimpleNode({}, {}, element.RawText());
    if (element.Children().empty()) return ReadWithoutChildren(element);
    const XmlElement& first = *element.Children().front();
    // Some writers put fields directly into a property, without rdf:Description or rdf:parseType.
    const bool directFields = element.Children().size() > 1 && first.NameSpace() != kNsRDF;
    return ReadNode(directFields ? element : first);
  }

  // Reads a text, or a property whose value is in its attributes.
  XMPNode ReadWithoutChildren(const XmlElement& element) {
    if (const XmlAttribute* id = element.FindAttribute(kNsRDF, "nodeID")) {
      const auto found = nodes_.find(id->value);
      if (found != nodes_.end()) return ReadReferenced(*found->second);
    }
    std::vector<XMPNode> others = PropertiesInAttributes(element);
    for (const char* name : {"value", "resource"}) {
      const XmlAttribute* value = element.FindAttribute(kNsRDF, name);
      if (value == nullptr) continue;
      XMPNode node = SimpleNode({}, {}, value->value);
      node.qualifiers = std::move(others);
      return node;
    }
    if (others.empty()) return SimpleNode({}, {}, element.RawText());
    XMPNode node;
    if (!element.Text().empty()) {
      node.value = element.RawText();
      node.qualifiers = std::move(others);
    } else {
      node.form = NodeForm::kStruct;
      node.children = std::move(others);
    }
    return node;
  }

  XMPNode ReadReferenced(const XmlElement& target) {
    if (depth_ >= kMaxReferenceDepth) return XMPNode();
    ++depth_;
    XMPNode node = ReadNode(target);
    --depth_;
    return node;
  }

  // Reads an array, a structure, or a value with qualifiers. An element other than rdf:Description
  // is a typed node, which reads as a structure.
  XMPNode ReadNode(const XmlElement& element) {
    XMPNode node;
    if (ArrayFormOf(element, node.arrayForm)) {
      node.form = NodeForm::kArray;
      for (const XmlElement* item : element.Children()) {
        if (IsItem(*item)) node.children.push_back(ReadValue(*item));
      }
      return node;
    }
    if (const XmlElement* value = ValueChild(element)) {
      node = ReadValue(*value);
      Append(node.qualifiers, ReadProperties(element));
      return node;
    }
    if (const XmlAttribute* value = element.FindAttribute(kNsRDF, "value")) {
      node.value = value->value;
      node.qualifiers = ReadProperties(element);
      return node;
    }
    node.form = NodeForm::kStruct;
    node.children = ReadProperties(element);
    return node;
  }

  static const XmlElement* ValueChild(const XmlElement& element) {
    const auto& children = element.Children();
    const auto found = std::find_if(children.begin(), children.end(),
                                    [](const XmlElement* c) { return IsRDF(*c, "value"); });
    return found == children.end() ? nullptr : *found;
  }

  std::unordered_map<std::string, const XmlElement*> nodes_;  // by rdf:nodeID
  std::size_t depth_ = 0;                                     // of nested references
  std::size_t referenced_ = 0;                                // bytes copied by references so far
};

// The first rdf:RDF in document order. XMP has it at the top or in x:xmpmeta; other XML documents
// have it deeper.
const XmlElement* FindRDF(const XmlElement& root) {
  std::vector<const XmlElement*> open{&root};
  while (!open.empty()) {
    const XmlElement* element = open.back();
    open.pop_back();
    if (IsRDF(*element, "RDF")) return element;
    const auto& children = element->Children();
    open.insert(open.end(), children.rbegin(), children.rend());
  }
  return nullptr;
}

}  // namespace

std::vector<XMPNode> ReadRDF(const foundation::XmlDocument& document) {
  const XmlElement* rdf = FindRDF(document.Root());
  if (rdf == nullptr) throw XMP_Error(kXMPErr_BadRDF, "no rdf:RDF in the document");
  Reader reader(*rdf);
  std::vector<XMPNode> properties;
  for (const XmlElement* node : rdf->Children()) {
    ArrayForm form;
    if (ArrayFormOf(*node, form)) continue;  // only used through references
    Append(properties, reader.ReadProperties(*node));
  }
  SortProperties(properties);
  return properties;
}

}  // namespace Sorvik::xmp
