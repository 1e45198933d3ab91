// SPDX-License-Identifier: MIT
#include "formats/XercesDocument.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"
#include "foundation/CardFolder.h"
#include "foundation/XmlTree.h"
#include "foundation/platform/OwnModule.h"
#include "foundation/platform/ReadReports.h"

namespace Sorvik::formats {
namespace {

// Loaded with the first document and never unloaded.
const XercesModule& Module() {
  static const XercesModule& module = *reinterpret_cast<XercesModuleFunction*>(
      platform::FunctionOfOwnModule(SORVIK_XERCES_MODULE, kXercesModuleFunction))();
  return module;
}

bool EqualsAscii(std::u16string_view text, std::string_view ascii) {
  return std::ranges::equal(text, ascii, {}, {}, [](char c) {
    return static_cast<char16_t>(static_cast<unsigned char>(c));
  });
}

// `element` or the first of its following siblings with that name.
const void* FirstNamed(const void* element, std::string_view name) {
  while (element != nullptr && !EqualsAscii(Module().Name(element), name)) {
    element = Module().NextSibling(element);
  }
  return element;
}

}  // namespace

std::string XercesElement::Name() const {
  return node_ == nullptr ? std::string() : Hestra::MakeStdString(Module().Name(node_));
}

bool XercesElement::HasChildren() const noexcept {
  return node_ != nullptr && Module().HasChildren(node_);
}

XercesElement FindChildElement(XercesElement parent, std::string_view name) {
  if (!parent) return {};
  return XercesElement(FirstNamed(Module().FirstChild(parent.node_), name));
}

XercesElement FindNextSiblingElement(XercesElement node, std::string_view name) {
  if (!node) return {};
  return XercesElement(FirstNamed(Module().NextSibling(node.node_), name));
}

XercesElement FirstChildElement(XercesElement parent) {
  return parent ? XercesElement(Module().FirstChild(parent.node_)) : XercesElement();
}

XercesElement NextSiblingElement(XercesElement node) {
  return node ? XercesElement(Module().NextSibling(node.node_)) : XercesElement();
}

void GetElementAttribute(XercesElement element, std::string_view name, std::string& out) {
  out.clear();
  if (!element) return;
  const UTF16String wideName = tarnwick::utility::AsciiToUTF16(name);
  const char16_t* text = Module().Attribute(element.node_, wideName.c_str());
  if (text != nullptr) out = Hestra::MakeStdString(text);
}

std::optional<XercesDocument> XercesDocument::Parse(std::string_view bytes,
                                                    const XercesLimits& limits) {
  auto tree = Module().Parse(bytes, limits);
  if (!tree && bytes.size() <= limits.bytes) {
    tree = Module().Parse(foundation::NormalizeXml(bytes), limits);
  }
  if (!tree) return std::nullopt;
  return XercesDocument(std::move(tree));
}

std::optional<XercesDocument> XercesDocument::ReadFile(const std::string& path,
                                                       const XercesLimits& limits) {
  const auto file = foundation::OpenOnCard(path);
  if (!file) return std::nullopt;
  if (file->Size() > limits.bytes) {
    platform::ReportReadFailure(path, "too large");
    return std::nullopt;
  }
  std::vector<std::byte> bytes(static_cast<std::size_t>(file->Size()));
  bytes.resize(file->ReadAt(0, bytes));
  auto document = Parse({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, limits);
  if (!document) platform::ReportReadFailure(path, foundation::kMalformedXml);
  return document;
}

XercesElement XercesDocument::Root() const noexcept {
  const XercesElement root(tree_ == nullptr ? nullptr : tree_->Root());
  return root.HasChildren() ? root : XercesElement();
}

}  // namespace Sorvik::formats
