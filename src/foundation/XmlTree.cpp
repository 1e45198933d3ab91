// SPDX-License-Identifier: MIT
#include "foundation/XmlTree.h"

#include <expat.h>

#include <algorithm>
#include <utility>

#include "foundation/CardFolder.h"
#include "foundation/XmlEncoding.h"
#include "foundation/platform/ReadReports.h"

namespace Sorvik::foundation {
namespace {

// Separates namespace and local name in expat's names; not allowed in names.
constexpr char kNameSeparator = '\x01';

constexpr std::string_view kWhiteSpace = " \t\r\n";

std::pair<std::string, std::string> SplitName(const char* name) {
  const std::string_view text = name;
  const auto separator = text.rfind(kNameSeparator);
  if (separator == text.npos) return {std::string(), std::string(text)};
  return {std::string(text.substr(0, separator)), std::string(text.substr(separator + 1))};
}

}  // namespace

// Handles expat's events. Not recursive, so deep documents use no stack.
class XmlBuilder {
 public:
  explicit XmlBuilder(const XmlLimits& limits)
      : limits_(limits), parser_(XML_ParserCreateNS(nullptr, kNameSeparator)) {
    if (parser_ == nullptr) return;
    XML_SetUserData(parser_, this);
    XML_SetElementHandler(parser_, OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser_, OnText);
    XML_SetEntityDeclHandler(parser_, OnEntity);
    XML_SetStartNamespaceDeclHandler(parser_, OnNameSpace);
  }
  ~XmlBuilder() {
    if (parser_ != nullptr) XML_ParserFree(parser_);
  }
  XmlBuilder(const XmlBuilder&) = delete;
  XmlBuilder& operator=(const XmlBuilder&) = delete;

  std::optional<XmlDocument> Parse(std::string_view utf8) {
    if (parser_ == nullptr) return std::nullopt;
    XML_SetEncoding(parser_, "UTF-8");
    const auto status = XML_Parse(parser_, utf8.data(), static_cast<int>(utf8.size()), XML_TRUE);
    // What follows the root element doesn't count: the rest of a previous, longer document, or a
    // truncated processing instruction.
    const bool stopped = XML_GetErrorCode(parser_) == XML_ERROR_ABORTED;
    const bool complete = status == XML_STATUS_OK || (open_.empty() && !stopped);
    if (!complete || document_.elements_.empty()) return std::nullopt;
    return std::move(document_);
  }

 private:
  static void OnStart(void* self, const char* name, const char** attributes) {
    static_cast<XmlBuilder*>(self)->Start(name, attributes);
  }
  static void OnEnd(void* self, const char*) { static_cast<XmlBuilder*>(self)->open_.pop_back(); }
  static void OnText(void* self, const char* text, int length) {
    auto* builder = static_cast<XmlBuilder*>(self);
    builder->open_.back()->text_.append(text, static_cast<std::size_t>(length));
  }
  // Reject entity declarations (XXE, entity expansion). No camera writes them.
  static void OnEntity(void* self, const char*, int, const char*, int, const char*, const char*,
                       const char*, const char*) {
    XML_StopParser(static_cast<XmlBuilder*>(self)->parser_, XML_FALSE);
  }

  static void OnNameSpace(void* self, const char*, const char* uri) {
    const auto* builder = static_cast<XmlBuilder*>(self);
    if (uri != nullptr && std::string_view(uri).size() > builder->limits_.nameSpace) {
      XML_StopParser(builder->parser_, XML_FALSE);
    }
  }

  void Start(const char* name, const char** attributes) {
    ++nodes_;
    XmlElement& element = document_.elements_.emplace_back();
    std::tie(element.nameSpace_, element.name_) = SplitName(name);
    for (; attributes[0] != nullptr; attributes += 2) {
      ++nodes_;
      auto [nameSpace, local] = SplitName(attributes[0]);
      element.attributes_.push_back({std::move(nameSpace), std::move(local), attributes[1]});
    }
    if (!open_.empty()) open_.back()->children_.push_back(&element);
    open_.push_back(&element);
    if (open_.size() > limits_.depth || nodes_ > limits_.nodes) {
      XML_StopParser(parser_, XML_FALSE);
    }
  }

  const XmlLimits limits_;
  XML_Parser parser_;
  XmlDocument document_;
  std::vector<XmlElement*> open_;
  std::size_t nodes_ = 0;
};

std::string_view XmlElement::Text() const noexcept {
  const auto first = text_.find_first_not_of(kWhiteSpace);
  if (first == text_.npos) return {};
  const auto last = text_.find_last_not_of(kWhiteSpace);
  return std::string_view(text_).substr(first, last - first + 1);
}

const XmlElement* XmlElement::Child(std::string_view name) const noexcept {
  const auto found = std::find_if(children_.begin(), children_.end(),
                                  [&](const XmlElement* child) { return child->Name() == name; });
  return found == children_.end() ? nullptr : *found;
}

const XmlElement* XmlElement::Find(std::initializer_list<std::string_view> names) const noexcept {
  const XmlElement* element = this;
  for (const std::string_view name : names) {
    element = element->Child(name);
    if (element == nullptr) return nullptr;
  }
  return element;
}

std::vector<const XmlElement*> XmlElement::ChildrenNamed(std::string_view name) const {
  std::vector<const XmlElement*> found;
  std::copy_if(children_.begin(), children_.end(), std::back_inserter(found),
               [&](const XmlElement* child) { return child->Name() == name; });
  return found;
}

std::string_view XmlElement::TextOf(std::string_view childName) const noexcept {
  const XmlElement* child = Child(childName);
  return child == nullptr ? std::string_view() : child->Text();
}

std::string_view XmlElement::Attribute(std::string_view name) const noexcept {
  const auto found = std::find_if(attributes_.begin(), attributes_.end(),
                                  [&](const XmlAttribute& a) { return a.name == name; });
  return found == attributes_.end() ? std::string_view() : std::string_view(found->value);
}

const XmlAttribute* XmlElement::FindAttribute(std::string_view nameSpace,
                                              std::string_view name) const noexcept {
  const auto found = std::find_if(
      attributes_.begin(), attributes_.end(),
      [&](const XmlAttribute& a) { return a.nameSpace == nameSpace && a.name == name; });
  return found == attributes_.end() ? nullptr : &*found;
}

std::optional<XmlDocument> ParseXml(std::string_view bytes, const XmlLimits& limits) {
  if (bytes.size() > limits.bytes) return std::nullopt;
  XmlBuilder builder(limits);
  return builder.Parse(ToUTF8(bytes));
}

std::optional<XmlDocument> ReadXmlFile(const std::string& path, const XmlLimits& limits) {
  const auto bytes = ReadHeadOnCard(path, limits.bytes + 1);
  if (!bytes) return std::nullopt;
  auto document = ParseXml({reinterpret_cast<const char*>(bytes->data()), bytes->size()}, limits);
  if (!document) platform::ReportReadFailure(path, kMalformedXml);
  return document;
}

namespace {

// Finds the end of the root element of a document in UTF-8.
class RootEndFinder {
 public:
  // The offset after the end tag; nullopt if the document is malformed up to there, too deep, or
  // declares entities.
  std::optional<std::size_t> Find(std::string_view text) {
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate("UTF-8"), XML_ParserFree);
    if (!parser) return std::nullopt;
    parser_ = parser.get();
    XML_SetUserData(parser_, this);
    XML_SetElementHandler(parser_, OnStart, OnEnd);
    XML_SetEntityDeclHandler(parser_, OnEntity);
    XML_Parse(parser_, text.data(), static_cast<int>(text.size()), XML_TRUE);
    return end_;
  }

 private:
  static void OnStart(void* self, const char*, const char**) {
    auto* finder = static_cast<RootEndFinder*>(self);
    if (++finder->depth_ > XmlLimits().depth) XML_StopParser(finder->parser_, XML_FALSE);
  }
  static void OnEnd(void* self, const char*) {
    auto* finder = static_cast<RootEndFinder*>(self);
    if (--finder->depth_ > 0) return;
    finder->end_ = static_cast<std::size_t>(XML_GetCurrentByteIndex(finder->parser_) +
                                            XML_GetCurrentByteCount(finder->parser_));
    XML_StopParser(finder->parser_, XML_FALSE);
  }
  static void OnEntity(void* self, const char*, int, const char*, int, const char*, const char*,
                       const char*, const char*) {
    XML_StopParser(static_cast<RootEndFinder*>(self)->parser_, XML_FALSE);
  }

  XML_Parser parser_ = nullptr;
  std::size_t depth_ = 0;
  std::optional<std::size_t> end_;
};

}  // namespace

std::string NormalizeXml(std::string_view bytes) {
  bytes.remove_prefix(std::min(bytes.find_first_not_of(kWhiteSpace), bytes.size()));
  std::string text = ToUTF8(bytes);
  if (text.starts_with("<?xml") && text.size() > 5 && kWhiteSpace.find(text[5]) != text.npos) {
    const auto end = text.find("?>");
    if (end != text.npos) text.erase(0, end + 2);
  }
  if (const auto end = RootEndFinder().Find(text)) text.resize(*end);
  return text;
}

}  // namespace Sorvik::foundation
