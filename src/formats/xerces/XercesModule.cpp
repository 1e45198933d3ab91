// SPDX-License-Identifier: MIT
#include "formats/xerces/XercesModule.h"

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>

#include "SorvikProvider/foundation/Export.h"

namespace Sorvik::formats {
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

class Parser : public xercesc::XercesDOMParser {
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

class Tree : public XercesTree {
 public:
  explicit Tree(const XercesLimits& limits) : parser_(limits) {}

  // False if there is no document then.
  bool Parse(std::string_view bytes) {
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()),
                                            bytes.size(), u"card index");
    parser_.parse(source);
    return parser_.getDocument() != nullptr;
  }

  const void* Root() const noexcept override {
    const xercesc::DOMNode* root = parser_.getDocument()->getDocumentElement();
    return root;
  }

 private:
  mutable Parser parser_;  // the library's look at a document isn't const
};

class Module final : public XercesModule {
 public:
  std::unique_ptr<XercesTree> Parse(std::string_view bytes,
                                    const XercesLimits& limits) const noexcept override {
    if (bytes.empty() || bytes.size() > limits.bytes || !InitialiseOnce()) return nullptr;
    try {
      auto tree = std::make_unique<Tree>(limits);
      if (!tree->Parse(bytes)) return nullptr;
      return tree;
    } catch (...) {
      // What the library raises has no common base (XMLException, SAXException, DOMException,
      // OutOfMemoryException); whichever it is, the document counts as not there.
      return nullptr;
    }
  }

  const char16_t* Name(const void* element) const noexcept override {
    return NodeOf(element)->getNodeName();
  }

  bool HasChildren(const void* element) const noexcept override {
    return NodeOf(element)->getFirstChild() != nullptr;
  }

  const void* FirstChild(const void* element) const noexcept override {
    return FirstElement(NodeOf(element)->getFirstChild());
  }

  const void* NextSibling(const void* element) const noexcept override {
    return FirstElement(NodeOf(element)->getNextSibling());
  }

  const char16_t* Attribute(const void* element, const char16_t* name) const noexcept override {
    return static_cast<const xercesc::DOMElement*>(NodeOf(element))->getAttribute(name);
  }
};

}  // namespace
}  // namespace Sorvik::formats

extern "C" SORVIK_EXPORT const Sorvik::formats::XercesModule* SorvikXercesModule() noexcept {
  static const Sorvik::formats::Module module;
  return &module;
}
