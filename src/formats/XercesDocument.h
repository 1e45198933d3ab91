// SPDX-License-Identifier: MIT
// Documents of card indexes (MEDIAPRO.XML, INDEX.XML, playlists) as a DOM of Xerces-C. A document
// with a DOCTYPE is rejected (XXE, entity expansion), so no file or address is ever fetched; size,
// depth and number of nodes are limited; no exception of the parser leaves the module. Names and
// texts are UTF-8. Any thread; a document belongs to one thread at a time.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "formats/xerces/XercesModule.h"

namespace Sorvik::formats {

// An element of a document, which owns it. A default-constructed one is a null element.
class XercesElement {
 public:
  XercesElement() noexcept = default;

  explicit operator bool() const noexcept { return node_ != nullptr; }
  // The node name, with its prefix as written in the file; empty for a null element.
  std::string Name() const;
  bool HasChildren() const noexcept;

 private:
  friend class XercesDocument;
  friend XercesElement FindChildElement(XercesElement parent, std::string_view name);
  friend XercesElement FindNextSiblingElement(XercesElement node, std::string_view name);
  friend XercesElement FirstChildElement(XercesElement parent);
  friend XercesElement NextSiblingElement(XercesElement node);
  friend void GetElementAttribute(XercesElement element, std::string_view name, std::string& out);

  explicit XercesElement(const void* node) noexcept : node_(node) {}

  const void* node_ = nullptr;  // owned by the module
};

// The first child element with that node name (ASCII); null if there is none or `parent` is null.
XercesElement FindChildElement(XercesElement parent, std::string_view name);
// The next sibling element with that node name (ASCII); null at the end.
XercesElement FindNextSiblingElement(XercesElement node, std::string_view name);
// The same for elements of any name.
XercesElement FirstChildElement(XercesElement parent);
XercesElement NextSiblingElement(XercesElement node);
// The text of the attribute `name` (ASCII); `out` is empty if the attribute is missing or the
// element is null.
void GetElementAttribute(XercesElement element, std::string_view name, std::string& out);

class XercesDocument {
 public:
  // Returns nullopt if the bytes aren't well-formed, exceed a limit or contain a DOCTYPE. Tolerates
  // what foundation::NormalizeXml removes, and text in another encoding than declared. Throws
  // std::runtime_error if the module can't be loaded: with a broken installation a card must not
  // look as if it had no index.
  static std::optional<XercesDocument> Parse(std::string_view bytes,
                                             const XercesLimits& limits = {});
  // The same for a regular file; nullopt also if it can't be opened or exceeds the size limit.
  static std::optional<XercesDocument> ReadFile(const std::string& path,
                                                const XercesLimits& limits = {});

  // The document element; null if it has no child nodes.
  XercesElement Root() const noexcept;

 private:
  explicit XercesDocument(std::unique_ptr<XercesTree> tree) noexcept : tree_(std::move(tree)) {}

  std::unique_ptr<XercesTree> tree_;
};

}  // namespace Sorvik::formats
