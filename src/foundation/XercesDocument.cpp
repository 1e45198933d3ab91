// SPDX-License-Identifier: MIT
#include "foundation/XercesDocument.h"

#include <utility>
#include <vector>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>

#include "foundation/platform/FileSystem.h"

namespace Sorvik::foundation {
namespace {

// Thrown to leave the parser from within its callbacks; never leaves this file.
struct Refused {};

// The library counts its initialisations but doesn't guard them. This one is never taken back: a
// host may use the library as well, and documents may live until the end.
bool InitialiseOnce() noexcept {
  static const bool done = [] {
    try {
      xercesc::XMLPlatformUtils::Initialize();
      return true;
    } catch (...) {  // whatever the library throws there, it can't be used then
      return false;
    }
  }();
  return done;
}

class StopAtErrors : public xercesc::ErrorHandler {
 public:
  void warning(const xercesc::SAXParseException&) override {}
  void error(const xercesc::SAXParseException&) override {}
  void fatalError(const xercesc::SAXParseException&) override { throw Refused(); }
  void resetErrors() override {}
};

const xercesc::DOMNode* NodeOf(const void* node) {
  return static_cast<const xercesc::DOMNode*>(node);
}

// `node` or the first sibling behind it that is an element.
const xercesc::DOMNode* FirstElement(const xercesc::DOMNode* node) {
  while (node != nullptr && node->getNodeType() != xercesc::DOMNode::ELEMENT_NODE) {
    node = node->getNextSibling();
  }
  return node;
}

const xercesc::DOMNode* FirstElementNamed(const xercesc::DOMNode* node, std::u16string_view name) {
  for (node = FirstElement(node); node != nullptr; node = FirstElement(node->getNextSibling())) {
    if (node->getNodeName() == name) return node;
  }
  return nullptr;
}

}  // namespace

class XercesDocument::Parser : public xercesc::XercesDOMParser {
 public:
  explicit Parser(const XercesLimits& limits) : limits_(limits) {
    setValidationScheme(Val_Auto);
    setDoNamespaces(false);
    setDoSchema(false);
    setValidationSchemaFullChecking(false);
    setCreateEntityReferenceNodes(false);
    setLoadExternalDTD(false);
    setDisableDefaultEntityResolution(true);
    expansion_.setEntityExpansionLimit(100);
    setSecurityManager(&expansion_);
    setErrorHandler(&errors_);
  }

  void doctypeDecl(const xercesc::DTDElementDecl&, const XMLCh*, const XMLCh*, bool,
                   bool) override {
    throw Refused();
  }

  void startElement(const xercesc::XMLElementDecl& element, const unsigned int urlId,
                    const XMLCh* prefix, const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                    const XMLSize_t attributeCount, const bool isEmpty,
                    const bool isRoot) override {
    nodes_ += 1 + attributeCount;
    // An empty element ends within the call below, which counts its depth down again.
    if (++depth_ > limits_.depth || nodes_ > limits_.nodes) throw Refused();
    XercesDOMParser::startElement(element, urlId, prefix, attributes, attributeCount, isEmpty,
                                  isRoot);
  }

  void endElement(const xercesc::XMLElementDecl& element, const unsigned int urlId,
                  const bool isRoot, const XMLCh* prefix) override {
    --depth_;
    XercesDOMParser::endElement(element, urlId, isRoot, prefix);
  }

 private:
  const XercesLimits limits_;
  std::size_t depth_ = 0;
  std::size_t nodes_ = 0;
  xercesc::SecurityManager expansion_;
  StopAtErrors errors_;
};

UTF16String XercesElement::Name() const {
  return node_ == nullptr ? UTF16String() : UTF16String(NodeOf(node_)->getNodeName());
}

bool XercesElement::HasChildren() const noexcept {
  return node_ != nullptr && NodeOf(node_)->getFirstChild() != nullptr;
}

XercesElement FindChildElement(XercesElement parent, std::u16string_view name) {
  if (!parent) return {};
  return XercesElement(FirstElementNamed(NodeOf(parent.node_)->getFirstChild(), name));
}

XercesElement FindNextSiblingElement(XercesElement node, std::u16string_view name) {
  if (!node) return {};
  return XercesElement(FirstElementNamed(NodeOf(node.node_)->getNextSibling(), name));
}

XercesElement FirstChildElement(XercesElement parent) {
  if (!parent) return {};
  return XercesElement(FirstElement(NodeOf(parent.node_)->getFirstChild()));
}

XercesElement NextSiblingElement(XercesElement node) {
  if (!node) return {};
  return XercesElement(FirstElement(NodeOf(node.node_)->getNextSibling()));
}

void GetElementAttribute(XercesElement element, const UTF16String& name, UTF16String& out) {
  out.clear();
  if (!element) return;
  const auto* node = static_cast<const xercesc::DOMElement*>(NodeOf(element.node_));
  if (const XMLCh* text = node->getAttribute(name.c_str())) out.append(text);
}

std::optional<XercesDocument> XercesDocument::Parse(std::string_view bytes,
                                                    const XercesLimits& limits) {
  if (bytes.empty() || bytes.size() > limits.bytes || !InitialiseOnce()) return std::nullopt;
  try {
    auto parser = std::make_unique<Parser>(limits);
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()),
                                            bytes.size(), u"card index");
    parser->parse(source);
    if (parser->getDocument() == nullptr) return std::nullopt;
    return XercesDocument(std::move(parser));
  } catch (...) {
    // What the library raises has no common base (XMLException, SAXException, DOMException,
    // OutOfMemoryException); whichever it is, the document counts as not there.
    return std::nullopt;
  }
}

std::optional<XercesDocument> XercesDocument::ReadFile(const UTF16String& path,
                                                       const XercesLimits& limits) {
  const auto file = platform::RegularFile::Open(Hestra::MakeStdString(path));
  if (!file || file->Size() > limits.bytes) return std::nullopt;
  std::vector<std::byte> bytes(static_cast<std::size_t>(file->Size()));
  bytes.resize(file->ReadAt(0, bytes));
  return Parse({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, limits);
}

XercesDocument::XercesDocument(std::unique_ptr<Parser> parser) noexcept
    : parser_(std::move(parser)) {}
XercesDocument::XercesDocument(XercesDocument&& other) noexcept = default;
XercesDocument& XercesDocument::operator=(XercesDocument&& other) noexcept = default;
XercesDocument::~XercesDocument() = default;

XercesElement XercesDocument::Root() const noexcept {
  const xercesc::DOMElement* root =
      parser_ == nullptr ? nullptr : parser_->getDocument()->getDocumentElement();
  const XercesElement element(static_cast<const xercesc::DOMNode*>(root));
  return element.HasChildren() ? element : XercesElement();
}

}  // namespace Sorvik::foundation
