// SPDX-License-Identifier: MIT
// The XMP data model (ISO 16684-1, clause 6): properties by namespace and name, each a simple text,
// a structure or an array. An object must not be used by several threads at the same time.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

namespace Sorvik::xmp {

// The exception of the XMP layer. The id is the kind of failure.
class XMP_Error : public std::exception {
 public:
  XMP_Error(std::int32_t id, std::string message) : id_(id), message_(std::move(message)) {}
  std::int32_t GetID() const noexcept { return id_; }
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  std::int32_t id_;
  std::string message_;
};

inline constexpr std::int32_t kXMPErr_BadXPath = 102;  // a property is not of the expected form
inline constexpr std::int32_t kXMPErr_BadXML = 201;
inline constexpr std::int32_t kXMPErr_BadRDF = 202;
inline constexpr std::int32_t kXMPErr_BadFile = 114;  // a file that can't be read

using XMP_OptionBits = std::uint32_t;
inline constexpr XMP_OptionBits kXMP_PropValueIsStruct = 0x0100;
inline constexpr XMP_OptionBits kXMP_PropValueIsArray = 0x0200;
inline constexpr XMP_OptionBits kXMP_PropArrayIsOrdered = 0x0400;
inline constexpr XMP_OptionBits kXMP_PropArrayIsAlternate = 0x0800;
inline constexpr XMP_OptionBits kXMP_PropArrayIsAltText = 0x1000;

enum class ArrayForm { kBag, kSeq, kAlt };

struct XMPNode;  // src/xmp/XMPNode.h

class TXMPMeta {
 public:
  TXMPMeta();
  TXMPMeta(const TXMPMeta& other);
  TXMPMeta(TXMPMeta&& other) noexcept;
  TXMPMeta& operator=(TXMPMeta other) noexcept;
  ~TXMPMeta();

  // Parses a serialised packet in UTF-8, UTF-16 or UTF-32, with or without its wrapper, and
  // replaces the object's content. Throws XMP_Error if it isn't well-formed.
  void ParseFromBuffer(const char* bytes, std::uint32_t length, XMP_OptionBits options = 0);

  // Getters return true and set the value if the item exists; otherwise they return false and leave
  // the value unchanged. They throw error 102 if a property on the path has another form than
  // requested. `options` may be null.
  bool GetProperty(std::string_view schema, std::string_view name, std::string* value,
                   XMP_OptionBits* options = nullptr) const;
  bool GetArrayItem(std::string_view schema, std::string_view arrayName, std::int32_t index,
                    std::string* value, XMP_OptionBits* options = nullptr) const;
  bool GetStructField(std::string_view schema, std::string_view structName,
                      std::string_view fieldSchema, std::string_view fieldName, std::string* value,
                      XMP_OptionBits* options = nullptr) const;
  // Selects by RFC 3066 language tags: the specific language, the generic one, "x-default", then
  // the first item. `genericLang` may be null.
  bool GetLocalizedText(std::string_view schema, std::string_view altTextName,
                        const char* genericLang, std::string_view specificLang,
                        std::string* actualLang, std::string* value,
                        XMP_OptionBits* options = nullptr) const;

  // Whether the object has no properties; whether it has a property of that name.
  bool Empty() const noexcept;
  bool HasProperty(std::string_view schema, std::string_view name) const noexcept;

  // Setters for readers of native metadata. Empty values are not stored. Setting a property again
  // replaces it; AppendArrayItem creates the array if it is missing.
  void SetProperty(std::string_view schema, std::string_view name, std::string value);
  void SetStructField(std::string_view schema, std::string_view structName,
                      std::string_view fieldSchema, std::string_view fieldName, std::string value);
  void AppendArrayItem(std::string_view schema, std::string_view arrayName, ArrayForm form,
                       std::string value);
  void SetLocalizedText(std::string_view schema, std::string_view altTextName,
                        std::string_view language, std::string value);

  // Copies each property of `weaker` that this object doesn't have.
  void FillFrom(const TXMPMeta& weaker);
  // Copies one property of `other` over the one in this object, if `other` has it.
  void TakeFrom(const TXMPMeta& other, std::string_view schema, std::string_view name);
  // Deletes each property that has the same value in `other`.
  void RemoveEqual(const TXMPMeta& other);
  void DeleteProperty(std::string_view schema, std::string_view name) noexcept;
  void Clear() noexcept;

 private:
  XMPNode& Root();

  std::unique_ptr<XMPNode> root_;  // null while the object is empty
};

using SXMPMeta = TXMPMeta;

}  // namespace Sorvik::xmp
