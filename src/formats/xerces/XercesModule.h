// SPDX-License-Identifier: MIT
// The interface between the library and its module for card indexes, the only code that links
// Xerces-C. It is a module of its own because Xerces-C depends on more than thirty other shared
// objects (a network client among them), which dominated the start-up time of programs, and few of
// them ever read an index. Nodes are passed as addresses that only the module interprets.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace Sorvik::formats {

struct XercesLimits {
  // The list of a disc with 4,700 clips, more than fit on any medium, takes 2 MB.
  std::size_t bytes = std::size_t{16} << 20;
  // The parser's time is quadratic in the depth; card indexes have a depth of 6.
  std::size_t depth = 256;
  std::size_t nodes = 300'000;  // elements plus attributes; such a list has 140,000
};

// A parsed document, which owns its elements.
class XercesTree {
 public:
  XercesTree() = default;
  XercesTree(const XercesTree&) = delete;
  XercesTree& operator=(const XercesTree&) = delete;
  virtual ~XercesTree() = default;

  // The document element; null if the document has none.
  virtual const void* Root() const noexcept = 0;
};

// Stateless; any thread. Arguments that are elements are never null.
class XercesModule {
 public:
  // Returns null if the bytes aren't well-formed, exceed a limit or contain a DOCTYPE.
  virtual std::unique_ptr<XercesTree> Parse(std::string_view bytes,
                                            const XercesLimits& limits) const noexcept = 0;
  virtual const char16_t* Name(const void* element) const noexcept = 0;
  virtual bool HasChildren(const void* element) const noexcept = 0;
  // Child elements, in document order; null at the end.
  virtual const void* FirstChild(const void* element) const noexcept = 0;
  virtual const void* NextSibling(const void* element) const noexcept = 0;
  // Null or empty if the attribute is missing.
  virtual const char16_t* Attribute(const void* element, const char16_t* name) const noexcept = 0;

 protected:
  ~XercesModule() = default;
};

// The only function that the module exports, named kXercesModuleFunction.
using XercesModuleFunction = const XercesModule*() noexcept;
inline constexpr char kXercesModuleFunction[] = "SorvikXercesModule";

}  // namespace Sorvik::formats
