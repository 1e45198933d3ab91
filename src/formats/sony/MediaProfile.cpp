// SPDX-License-Identifier: MIT
#include "formats/sony/MediaProfile.h"

#include <algorithm>

#include "formats/XercesDocument.h"
#include "foundation/CallScope.h"
#include "foundation/Paths.h"

namespace Sorvik::formats::sony {
namespace {

using foundation::CallScope;
using foundation::FoldCase;

std::string Attribute(XercesElement element, std::string_view name) {
  static constexpr std::string_view kWhiteSpace = " \t\r\n";
  std::string text;
  GetElementAttribute(element, name, text);
  const auto begin = text.find_first_not_of(kWhiteSpace);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(kWhiteSpace) - begin + 1);
}

std::optional<MaterialPart::Kind> KindOfPart(std::string_view name) {
  if (name == "Component") return MaterialPart::Kind::kComponent;
  if (name == "Proxy") return MaterialPart::Kind::kProxy;
  if (name == "RelevantInfo") return MaterialPart::Kind::kRelevantInfo;
  return std::nullopt;
}

void ReadParts(XercesElement element, std::size_t maxParts, Material& material) {
  for (XercesElement part = FirstChildElement(element); part && material.parts.size() < maxParts;
       part = NextSiblingElement(part)) {
    const auto kind = KindOfPart(part.Name());
    if (!kind) continue;
    material.parts.push_back({*kind, Attribute(part, "uri"), Attribute(part, "type"),
                              Attribute(part, "umid"), Attribute(part, "dur")});
  }
}

Material ReadMaterial(XercesElement element, std::size_t maxParts) {
  Material material;
  material.uri = Attribute(element, "uri");
  material.umid = Attribute(element, "umid");
  material.title = Attribute(element, "title");
  material.status = Attribute(element, "status");
  material.videoType = Attribute(element, "videoType");
  material.audioType = Attribute(element, "audioType");
  material.frameRate = Attribute(element, "fps");
  material.duration = Attribute(element, "dur");
  material.channels = Attribute(element, "ch");
  material.aspectRatio = Attribute(element, "aspectRatio");
  ReadParts(element, maxParts, material);
  return material;
}

std::vector<Material> ReadMaterials(const XercesDocument& document, std::size_t& records) {
  std::vector<Material> materials;
  const XercesElement contents = FindChildElement(document.Root(), "Contents");
  for (XercesElement element = FindChildElement(contents, "Material");
       element && records < kMaxRecords; element = FindNextSiblingElement(element, "Material")) {
    materials.push_back(ReadMaterial(element, kMaxRecords - records));
    records += 1 + materials.back().parts.size();
  }
  return materials;
}

}  // namespace

const MaterialPart* Material::First(MaterialPart::Kind kind) const noexcept {
  const auto part = std::ranges::find(parts, kind, &MaterialPart::kind);
  return part == parts.end() ? nullptr : &*part;
}

void MediaProfile::IndexMaterials() {
  for (std::size_t i = 0; i < materials_.size(); ++i) {
    if (materials_[i].IsTake()) {
      IndexTake(i);
    } else {
      IndexFiles(i);
    }
  }
}

void MediaProfile::IndexTake(std::size_t index) {
  for (const MaterialPart& part : materials_[index].parts) {
    if (part.kind != MaterialPart::Kind::kComponent || part.umid.empty()) continue;
    byComponentUmid_.emplace(FoldCase(part.umid), index);
  }
}

void MediaProfile::IndexFiles(std::size_t index) {
  const auto add = [this, index](std::string_view uri) {
    std::string name = FoldCase(foundation::FileName(uri));
    if (!name.empty()) byFileName_.emplace(std::move(name), index);
  };
  add(materials_[index].uri);
  for (const MaterialPart& part : materials_[index].parts) {
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

std::shared_ptr<const MediaProfile> MediaProfile::Of(const std::string& path) {
  return CallScope::Remember<MediaProfile>(
      path, [&path] { return FromDocument(XercesDocument::ReadFile(path)); });
}

const Material* MediaProfile::FindMaterial(std::string_view fileName) const {
  const auto found = byFileName_.find(FoldCase(fileName));
  return found == byFileName_.end() ? nullptr : &materials_[found->second];
}

const Material* MediaProfile::FindTake(std::string_view componentUmid) const {
  const auto found = byComponentUmid_.find(FoldCase(componentUmid));
  return found == byComponentUmid_.end() ? nullptr : &materials_[found->second];
}

}  // namespace Sorvik::formats::sony
