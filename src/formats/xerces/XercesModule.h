// SPDX-License-Identifier: MIT
// What the library asks of its module for card indexes, the one file that links Xerces-C. Apart
// from the library, since Xerces-C draws in more than thirty other shared objects (a network client
// among them), which took most of the time that a program needed to start; few programs meet a card
// with an index. Nodes pass as addresses that only the module can read.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace Sorvik::formats {

struct XercesLimits {
  // The list of a disc with 4,700 clips, more than any medium holds, is 2 MB.
  std::size_t bytes = std::size_t{16} << 20;
  // The parser's time grows with the square of the depth; card indexes nest 6 deep.
  std::size_t depth = 256;
  std::size_t nodes = 300'000;  // elements and attributes together; those lists have 140,000
};

// A parsed document. Its elements live as long as it does.
class XercesTree {
 public:
  XercesTree() = default;
  XercesTree(const XercesTree&) = delete;
  XercesTree& operator=(const XercesTree&) = delete;
  virtual ~XercesTree() = default;

  // The document element; null if there is none.
  virtual const void* Root() const noexcept = 0;
};

// Stateless; any thread. Elements handed in are never null.
class XercesModule {
 public:
  // Null if the bytes aren't well-formed, go beyond the limits or hold a DOCTYPE.
  virtual std::unique_ptr<XercesTree> Parse(std::string_view bytes,
                                            const XercesLimits& limits) const noexcept = 0;
  virtual const char16_t* Name(const void* element) const noexcept = 0;
  virtual bool HasChildren(const void* element) const noexcept = 0;
  // Null at the end.
  virtual const void* FirstChild(const void* element) const noexcept = 0;
  virtual const void* NextSibling(const void* element) const noexcept = 0;
  // Null or empty if there is no such attribute.
  virtual const char16_t* Attribute(const void* element, const char16_t* name) const noexcept = 0;

 protected:
  ~XercesModule() = default;
};

// The one function that the module exports, under kXercesModuleFunction.
using XercesModuleFunction = const XercesModule*() noexcept;
inline constexpr char kXercesModuleFunction[] = "SorvikXercesModule";

}  // namespace Sorvik::formats
