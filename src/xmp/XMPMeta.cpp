// SPDX-License-Identifier: MIT
#include "xmp/XMPMeta.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "foundation/XmlTree.h"
#include "xmp/Namespaces.h"
#include "xmp/RDFReader.h"
#include "xmp/XMPNode.h"

namespace Sorvik::xmp {
namespace {

constexpr std::string_view kDefaultLanguage = "x-default";

auto NameOf(const XMPNode& node) {
  return std::tuple<std::string_view, std::string_view>(node.nameSpace, node.name);
}

bool LessByName(const XMPNode& a, const XMPNode& b) { return NameOf(a) < NameOf(b); }

// Top-level properties are sorted by name, which keeps packets with many properties fast.
std::vector<XMPNode>::const_iterator FindPosition(const std::vector<XMPNode>& properties,
                                                  std::string_view nameSpace,
                                                  std::string_view name) {
  const std::tuple wanted(nameSpace, name);
  return std::lower_bound(properties.begin(), properties.end(), wanted,
                          [](const XMPNode& node, const auto& key) { return NameOf(node) < key; });
}

const XMPNode* FindProperty(const XMPNode* root, std::string_view nameSpace,
                            std::string_view name) noexcept {
  if (root == nullptr) return nullptr;
  const auto position = FindPosition(root->children, nameSpace, name);
  return position != root->children.end() && position->Is(nameSpace, name) ? &*position : nullptr;
}

// Returns the property of that name, and creates it if it is missing.
XMPNode& PropertyFor(XMPNode& root, std::string_view nameSpace, std::string_view name) {
  const auto position = FindPosition(root.children, nameSpace, name);
  const auto index = position - root.children.cbegin();
  if (position == root.children.end() || !position->Is(nameSpace, name)) {
    XMPNode node;
    node.nameSpace = nameSpace;
    node.name = name;
    root.children.insert(position, std::move(node));
  }
  return root.children[static_cast<std::size_t>(index)];
}

// Sets the form of a node. Clears the node if it had another form.
void SetForm(XMPNode& node, NodeForm form, ArrayForm arrayForm = ArrayForm::kBag) {
  if (node.form == form && node.arrayForm == arrayForm) return;
  node.form = form;
  node.arrayForm = arrayForm;
  node.value.clear();
  node.children.clear();
}

bool SameLanguage(std::string_view a, std::string_view b) noexcept {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return lower(x) == lower(y); });
}

// An item without a language matches all languages.
std::string_view LanguageOfItem(const XMPNode& item) noexcept {
  const std::string_view language = LanguageOf(item);
  return language.empty() ? kDefaultLanguage : language;
}

// Whether `language` equals `range` or is a subtag of it ("de-AT" for "de").
bool InLanguageRange(std::string_view language, std::string_view range) noexcept {
  if (!SameLanguage(language.substr(0, range.size()), range)) return false;
  return language.size() == range.size() || language[range.size()] == '-';
}

const XMPNode* ChooseLanguage(const std::vector<XMPNode>& items, std::string_view generic,
                              std::string_view specific) {
  const auto first = [&](auto matches) -> const XMPNode* {
    const auto found = std::find_if(items.begin(), items.end(), [&](const XMPNode& item) {
      return matches(LanguageOfItem(item));
    });
    return found == items.end() ? nullptr : &*found;
  };
  if (const auto* item = first([&](auto lang) { return SameLanguage(lang, specific); })) {
    return item;
  }
  if (!generic.empty()) {
    if (const auto* item = first([&](auto lang) { return InLanguageRange(lang, generic); })) {
      return item;
    }
  }
  if (const auto* item = first([](auto lang) { return SameLanguage(lang, kDefaultLanguage); })) {
    return item;
  }
  return items.empty() ? nullptr : &items.front();
}

XMP_OptionBits OptionsOf(const XMPNode& node) {
  if (node.form == NodeForm::kSimple) return 0;
  if (node.form == NodeForm::kStruct) return kXMP_PropValueIsStruct;
  XMP_OptionBits options = kXMP_PropValueIsArray;
  if (node.arrayForm != ArrayForm::kBag) options |= kXMP_PropArrayIsOrdered;
  if (node.arrayForm != ArrayForm::kAlt) return options;
  options |= kXMP_PropArrayIsAlternate;
  const bool languages = std::any_of(node.children.begin(), node.children.end(),
                                     [](const XMPNode& item) { return !LanguageOf(item).empty(); });
  return languages ? options | kXMP_PropArrayIsAltText : options;
}

bool CopyOut(const XMPNode* node, std::string* value, XMP_OptionBits* options) {
  if (node == nullptr) return false;
  if (value != nullptr) *value = node->value;
  if (options != nullptr) *options = OptionsOf(*node);
  return true;
}

[[noreturn]] void ThrowBadPath(const char* expected) {
  throw XMP_Error(kXMPErr_BadXPath, std::string("the property is not ").append(expected));
}

// Packets end in padding, and some files append further bytes. Both are removed from 8-bit packets,
// and leading whitespace too, which is invalid in front of an XML declaration.
std::string_view TrimPacket(std::string_view bytes) {
  constexpr std::string_view kTrailer = "<?xpacket end";
  std::string_view trimmed = bytes;
  if (const auto first = trimmed.find_first_not_of(" \t\r\n"); first != trimmed.npos) {
    trimmed.remove_prefix(first);
  }
  // A NUL at the start means UTF-16 or UTF-32, whose first byte was removed as whitespace.
  if (trimmed.starts_with('\0')) return bytes;
  const auto trailer = trimmed.rfind(kTrailer);
  const auto end = trailer == trimmed.npos ? trailer : trimmed.find("?>", trailer);
  return end == trimmed.npos ? trimmed : trimmed.substr(0, end + 2);
}

}  // namespace

std::string_view LanguageOf(const XMPNode& node) noexcept {
  for (const XMPNode& qualifier : node.qualifiers) {
    if (qualifier.Is(kNsXML, "lang")) return qualifier.value;
  }
  return {};
}

void SortProperties(std::vector<XMPNode>& properties) {
  std::stable_sort(properties.begin(), properties.end(), LessByName);
  const auto same = [](const XMPNode& a, const XMPNode& b) { return NameOf(a) == NameOf(b); };
  properties.erase(std::unique(properties.begin(), properties.end(), same), properties.end());
}

TXMPMeta::TXMPMeta() = default;
TXMPMeta::TXMPMeta(const TXMPMeta& other)
    : root_(other.root_ == nullptr ? nullptr : std::make_unique<XMPNode>(*other.root_)) {}
TXMPMeta::TXMPMeta(TXMPMeta&& other) noexcept = default;
TXMPMeta& TXMPMeta::operator=(TXMPMeta other) noexcept {
  root_ = std::move(other.root_);
  return *this;
}
TXMPMeta::~TXMPMeta() = default;

XMPNode& TXMPMeta::Root() {
  if (root_ == nullptr) root_ = std::make_unique<XMPNode>();
  return *root_;
}

void TXMPMeta::ParseFromBuffer(const char* bytes, std::uint32_t length, XMP_OptionBits) {
  Clear();
  const auto document = foundation::ParseXml(TrimPacket({bytes, length}));
  if (!document) throw XMP_Error(kXMPErr_BadXML, "the packet is not well-formed XML");
  Root().children = ReadRDF(*document);
}

bool TXMPMeta::GetProperty(std::string_view schema, std::string_view name, std::string* value,
                           XMP_OptionBits* options) const {
  return CopyOut(FindProperty(root_.get(), schema, name), value, options);
}

bool TXMPMeta::GetArrayItem(std::string_view schema, std::string_view arrayName, std::int32_t index,
                            std::string* value, XMP_OptionBits* options) const {
  const XMPNode* array = FindProperty(root_.get(), schema, arrayName);
  if (array == nullptr) return false;
  if (array->form != NodeForm::kArray) ThrowBadPath("array");
  const auto& items = array->children;
  if (index < 1 || static_cast<std::size_t>(index) > items.size()) return false;
  return CopyOut(&items[static_cast<std::size_t>(index) - 1], value, options);
}

bool TXMPMeta::GetStructField(std::string_view schema, std::string_view structName,
                              std::string_view fieldSchema, std::string_view fieldName,
                              std::string* value, XMP_OptionBits* options) const {
  const XMPNode* node = FindProperty(root_.get(), schema, structName);
  if (node == nullptr) return false;
  if (node->form != NodeForm::kStruct) ThrowBadPath("structure");
  const auto field =
      std::find_if(node->children.begin(), node->children.end(),
                   [&](const XMPNode& child) { return child.Is(fieldSchema, fieldName); });
  return CopyOut(field == node->children.end() ? nullptr : &*field, value, options);
}

bool TXMPMeta::GetLocalizedText(std::string_view schema, std::string_view altTextName,
                                const char* genericLang, std::string_view specificLang,
                                std::string* actualLang, std::string* value,
                                XMP_OptionBits* options) const {
  const XMPNode* array = FindProperty(root_.get(), schema, altTextName);
  if (array == nullptr) return false;
  if (!array->IsArray(ArrayForm::kAlt)) ThrowBadPath("language alternative");
  const std::string_view generic = genericLang == nullptr ? "" : genericLang;
  const XMPNode* item = ChooseLanguage(array->children, generic, specificLang);
  if (!CopyOut(item, value, options)) return false;
  if (actualLang != nullptr) *actualLang = LanguageOfItem(*item);
  return true;
}

bool TXMPMeta::Empty() const noexcept { return root_ == nullptr || root_->children.empty(); }

bool TXMPMeta::HasProperty(std::string_view schema, std::string_view name) const noexcept {
  return FindProperty(root_.get(), schema, name) != nullptr;
}

void TXMPMeta::SetProperty(std::string_view schema, std::string_view name, std::string value) {
  if (value.empty()) return;
  XMPNode& node = PropertyFor(Root(), schema, name);
  SetForm(node, NodeForm::kSimple);
  node.value = std::move(value);
}

void TXMPMeta::SetStructField(std::string_view schema, std::string_view structName,
                              std::string_view fieldSchema, std::string_view fieldName,
                              std::string value) {
  if (value.empty()) return;
  XMPNode& node = PropertyFor(Root(), schema, structName);
  SetForm(node, NodeForm::kStruct);
  auto field = std::find_if(node.children.begin(), node.children.end(),
                            [&](const XMPNode& child) { return child.Is(fieldSchema, fieldName); });
  if (field == node.children.end()) field = node.children.emplace(field);
  field->nameSpace = fieldSchema;
  field->name = fieldName;
  field->value = std::move(value);
}

void TXMPMeta::AppendArrayItem(std::string_view schema, std::string_view arrayName, ArrayForm form,
                               std::string value) {
  if (value.empty()) return;
  XMPNode& node = PropertyFor(Root(), schema, arrayName);
  SetForm(node, NodeForm::kArray, form);
  node.children.emplace_back().value = std::move(value);
}

void TXMPMeta::SetLocalizedText(std::string_view schema, std::string_view altTextName,
                                std::string_view language, std::string value) {
  if (value.empty()) return;
  XMPNode& node = PropertyFor(Root(), schema, altTextName);
  SetForm(node, NodeForm::kArray, ArrayForm::kAlt);
  auto item = std::find_if(node.children.begin(), node.children.end(), [&](const XMPNode& i) {
    return SameLanguage(LanguageOfItem(i), language);
  });
  if (item == node.children.end()) item = node.children.emplace(item);
  item->value = std::move(value);
  XMPNode tag;
  tag.nameSpace = kNsXML;
  tag.name = "lang";
  tag.value = language;
  item->qualifiers.assign(1, std::move(tag));
}

void TXMPMeta::FillFrom(const TXMPMeta& weaker) {
  if (weaker.Empty()) return;
  auto& properties = Root().children;
  properties.insert(properties.end(), weaker.root_->children.begin(), weaker.root_->children.end());
  SortProperties(properties);
}

void TXMPMeta::TakeFrom(const TXMPMeta& other, std::string_view schema, std::string_view name) {
  const XMPNode* stronger = FindProperty(other.root_.get(), schema, name);
  if (stronger != nullptr) PropertyFor(Root(), schema, name) = XMPNode(*stronger);
}

void TXMPMeta::RemoveEqual(const TXMPMeta& other) {
  if (Empty()) return;
  std::erase_if(root_->children, [&other](const XMPNode& node) {
    const XMPNode* same = FindProperty(other.root_.get(), node.nameSpace, node.name);
    return same != nullptr && *same == node;
  });
}

void TXMPMeta::DeleteProperty(std::string_view schema, std::string_view name) noexcept {
  if (!HasProperty(schema, name)) return;
  root_->children.erase(FindPosition(root_->children, schema, name));
}

void TXMPMeta::Clear() noexcept { root_.reset(); }

}  // namespace Sorvik::xmp
