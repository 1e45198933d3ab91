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

// Thrown by callbacks of the parser to stop it; caught in Module::Parse.
struct ParseStopped {};

// Xerces-C counts its initializations without a lock. This one has no matching Terminate: the host
// may use Xerces-C, too, and documents may exist until the process exits.
bool InitializeOnce() noexcept {
  static const bool done = [] {
    try {
      xercesc::XMLPlatformUtils::Initialize();
      return true;
    } catch (...) {  // no common base class; Xerces-C can't be used in any of these cases
      return false;
    }
  }();
  return done;
}

class StopAtErrors : public xercesc::ErrorHandler {
 public:
  void warning(const xercesc::SAXParseException&) override {}
  void error(const xercesc::SAXParseException&) override {}
  void fatalError(const xercesc::SAXParseException&) override { throw ParseStopped(); }
  void resetErrors() override {}
};

const xercesc::DOMNode* NodeOf(const void* node) {
  return static_cast<const xercesc::DOMNode*>(node);
}

// `node` or the first of its following siblings that is an element.
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
    throw ParseStopped();
  }

  void startElement(const xercesc::XMLElementDecl& element, const unsigned int urlId,
                    const XMLCh* prefix, const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                    const XMLSize_t attributeCount, const bool isEmpty,
                    const bool isRoot) override {
    nodes_ += 1 + attributeCount;
    // For an empty element the call below also calls endElement.
    if (++depth_ > limits_.depth || nodes_ > limits_.nodes) throw ParseStopped();
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

  // Returns false if the parser made no document.
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
  mutable Parser parser_;  // getDocument isn't const
};

class Module final : public XercesModule {
 public:
  std::unique_ptr<XercesTree> Parse(std::string_view bytes,
                                    const XercesLimits& limits) const noexcept override {
    if (bytes.empty() || bytes.size() > limits.bytes || !InitializeOnce()) return nullptr;
    try {
      auto tree = std::make_unique<Tree>(limits);
      if (!tree->Parse(bytes)) return nullptr;
      return tree;
    } catch (...) {
      // Exceptions of Xerces-C have no common base class (XMLException, SAXException, DOMException,
      // OutOfMemoryException).
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
