// SPDX-License-Identifier: MIT
#include "formats/sony/MediaProfile.h"

#include "formats/XercesDocument.h"
#include "foundation/CallScope.h"
#include "foundation/hestra/PathUtils.h"

namespace Sorvik::formats::sony {
namespace {

using foundation::CallScope;

using tarnwick::utility::FoldCase;

UTF16String Attribute(XercesElement element, const UTF16String& name) {
  static constexpr std::u16string_view kBlanks = u" \t\r\n";
  UTF16String text;
  GetElementAttribute(element, name, text);
  const auto begin = text.find_first_not_of(kBlanks);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

std::optional<MaterialPart::Kind> KindOfPart(std::u16string_view name) {
  if (name == u"Component") return MaterialPart::Kind::kComponent;
  if (name == u"Proxy") return MaterialPart::Kind::kProxy;
  if (name == u"RelevantInfo") return MaterialPart::Kind::kRelevantInfo;
  return std::nullopt;
}

void ReadParts(XercesElement element, std::size_t most, Material& material) {
  for (XercesElement part = FirstChildElement(element); part && material.parts.size() < most;
       part = NextSiblingElement(part)) {
    const auto kind = KindOfPart(part.Name());
    if (!kind) continue;
    material.parts.push_back({*kind, Attribute(part, u"uri"), Attribute(part, u"type"),
                              Attribute(part, u"umid"), Attribute(part, u"dur")});
  }
}

Material ReadMaterial(XercesElement element, std::size_t maxParts) {
  Material material;
  material.uri = Attribute(element, u"uri");
  material.umid = Attribute(element, u"umid");
  material.title = Attribute(element, u"title");
  material.status = Attribute(element, u"status");
  material.videoType = Attribute(element, u"videoType");
  material.audioType = Attribute(element, u"audioType");
  material.frameRate = Attribute(element, u"fps");
  material.duration = Attribute(element, u"dur");
  material.channels = Attribute(element, u"ch");
  material.aspectRatio = Attribute(element, u"aspectRatio");
  ReadParts(element, maxParts, material);
  return material;
}

std::vector<Material> ReadMaterials(const XercesDocument& document, std::size_t& records) {
  std::vector<Material> materials;
  const XercesElement contents = FindChildElement(document.Root(), u"Contents");
  for (XercesElement element = FindChildElement(contents, u"Material");
       element && records < kMaxRecords; element = FindNextSiblingElement(element, u"Material")) {
    materials.push_back(ReadMaterial(element, kMaxRecords - records));
    records += 1 + materials.back().parts.size();
  }
  return materials;
}

}  // namespace

const MaterialPart* Material::First(MaterialPart::Kind kind) const noexcept {
  for (const MaterialPart& part : parts) {
    if (part.kind == kind) return &part;
  }
  return nullptr;
}

void MediaProfile::IndexMaterials() {
  for (std::size_t place = 0; place < materials_.size(); ++place) {
    if (materials_[place].IsTake()) {
      IndexTake(place);
    } else {
      IndexFiles(place);
    }
  }
}

void MediaProfile::IndexTake(std::size_t place) {
  for (const MaterialPart& part : materials_[place].parts) {
    if (part.kind != MaterialPart::Kind::kComponent || part.umid.empty()) continue;
    components_.emplace(FoldCase(part.umid), place);
  }
}

void MediaProfile::IndexFiles(std::size_t place) {
  const auto add = [this, place](const UTF16String& uri) {
    UTF16String name = FoldCase(Hestra::PathUtils::GetFullFilePart(uri));
    if (!name.empty()) files_.emplace(std::move(name), place);
  };
  add(materials_[place].uri);
  for (const MaterialPart& part : materials_[place].parts) {
    if (part.kind != MaterialPart::Kind::kProxy) add(part.uri);
  }
}

MediaProfile MediaProfile::FromDocument(const std::optional<XercesDocument>& document) {
  MediaProfile profile;
  if (!document || !document->Root()) return profile;
  profile.readable_ = true;
  profile.materials_ = ReadMaterials(*document, profile.records_);
  profile.IndexMaterials();
  return profile;
}

MediaProfile MediaProfile::FromBytes(std::string_view bytes) {
  return FromDocument(XercesDocument::Parse(bytes));
}

std::shared_ptr<const MediaProfile> MediaProfile::Of(const UTF16String& path) {
  return CallScope::Remember<MediaProfile>(Hestra::MakeStdString(path), [&path] {
    return FromDocument(XercesDocument::ReadFile(path));
  });
}

const Material* MediaProfile::OfFile(std::u16string_view name) const {
  const auto found = files_.find(FoldCase(name));
  return found == files_.end() ? nullptr : &materials_[found->second];
}

const Material* MediaProfile::TakeWith(std::u16string_view umid) const {
  const auto found = components_.find(FoldCase(umid));
  return found == components_.end() ? nullptr : &materials_[found->second];
}

}  // namespace Sorvik::formats::sony
