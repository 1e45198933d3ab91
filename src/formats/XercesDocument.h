// SPDX-License-Identifier: MIT
// Documents of card indexes (MEDIAPRO.XML, INDEX.XML, playlists) as a DOM of Xerces-C, with what
// could do harm turned off: a document with a DOCTYPE is refused, so no entity is declared and no
// file or address is ever fetched; size, depth and number of nodes are capped; nothing that the
// parser raises leaves this file. Any thread; a document belongs to one thread at a time.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "SorvikProvider/foundation/UTF16String.h"
#include "formats/xerces/XercesModule.h"

namespace Sorvik::formats {

// An element of a document, borrowed from it; a default-constructed one is no element.
class XercesElement {
 public:
  XercesElement() noexcept = default;

  explicit operator bool() const noexcept { return node_ != nullptr; }
  // The node name, with the prefix as it stands in the file; empty if this is no element.
  UTF16String Name() const;
  bool HasChildren() const noexcept;

 private:
  friend class XercesDocument;
  friend XercesElement FindChildElement(XercesElement parent, std::u16string_view name);
  friend XercesElement FindNextSiblingElement(XercesElement node, std::u16string_view name);
  friend XercesElement FirstChildElement(XercesElement parent);
  friend XercesElement NextSiblingElement(XercesElement node);
  friend void GetElementAttribute(XercesElement element, const UTF16String& name, UTF16String& out);

  explicit XercesElement(const void* node) noexcept : node_(node) {}

  const void* node_ = nullptr;  // an element of the module
};

// The first child that is an element of that node name; no element if there is none.
XercesElement FindChildElement(XercesElement parent, std::u16string_view name);
// The next sibling that is an element of that node name; no element at the end.
XercesElement FindNextSiblingElement(XercesElement node, std::u16string_view name);
// The same whatever the name.
XercesElement FirstChildElement(XercesElement parent);
XercesElement NextSiblingElement(XercesElement node);
// The attribute's text; `out` is empty if there is no such attribute or no element.
void GetElementAttribute(XercesElement element, const UTF16String& name, UTF16String& out);

class XercesDocument {
 public:
  // Nothing if the bytes aren't well-formed, go beyond the limits or hold a DOCTYPE. Throws
  // std::runtime_error if the module isn't there: the installation is broken, and a card must not
  // look as if it had no index.
  static std::optional<XercesDocument> Parse(std::string_view bytes,
                                             const XercesLimits& limits = {});
  // The same of a regular file; nothing if it can't be opened or is larger than the limit.
  static std::optional<XercesDocument> ReadFile(const UTF16String& path,
                                                const XercesLimits& limits = {});

  // The document element; no element if it has no child nodes.
  XercesElement Root() const noexcept;

 private:
  explicit XercesDocument(std::unique_ptr<XercesTree> tree) noexcept : tree_(std::move(tree)) {}

  std::unique_ptr<XercesTree> tree_;
};

}  // namespace Sorvik::formats
