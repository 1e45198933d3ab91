// SPDX-License-Identifier: MIT
#include "SorvikProvider/metadata/ValueSources.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/platform/ShareAccess.h"
#include "metadata/FieldRules.h"
#include "metadata/FrameCounts.h"
#include "metadata/XMPFieldTable.h"
#include "xmp/Namespaces.h"
#include "xmp/XMPFiles.h"

namespace Sorvik::XMPSupport {

// clang-format off
const FurtherProperty kFurtherProperties[kFurtherPropertyCount] = {
    {"aux:Lens", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/Lens=Lens", xmp::kNsAux, "Lens"},
    {"aux:LensSerialNumber", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/LensSerialNumber=Lens Serial Number", xmp::kNsAux, "LensSerialNumber"},
    {"aux:OwnerName", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/OwnerName=Owner", xmp::kNsAux, "OwnerName"},
    {"exif:ExposureTime", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/ExposureTime=Exposure Time", xmp::kNsEXIF, "ExposureTime"},
    {"exif:FNumber", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/FNumber=F-Number", xmp::kNsEXIF, "FNumber"},
    {"exif:FocalLength", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/FocalLength=Focal Length", xmp::kNsEXIF, "FocalLength"},
    {"exif:ISOSpeedRatings", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/ISOSpeedRatings=ISO Speed", xmp::kNsEXIF, "ISOSpeedRatings"},
    {"exif:DateTimeOriginal", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/DateTimeOriginal=Date Taken", xmp::kNsEXIF, "DateTimeOriginal"},
    {"exif:UserComment", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/UserComment=User Comment", xmp::kNsEXIF, "UserComment"},
    {"xmpDM:tapeName", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/tapeName=Reel", xmp::kNsDM, "tapeName"},
    {"xmpDM:altTapeName", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/altTapeName=Alternate Reel", xmp::kNsDM, "altTapeName"},
    {"xmpDM:director", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/director=Director", xmp::kNsDM, "director"},
    {"xmpDM:directorPhotography", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/directorPhotography=Director of Photography", xmp::kNsDM, "directorPhotography"},
    {"dc:subject", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/subject=Keywords", xmp::kNsDC, "subject"},
    {"dc:rights", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/rights=Rights", xmp::kNsDC, "rights"},
    {"dc:source", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/source=Source", xmp::kNsDC, "source"},
    {"photoshop:City", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/City=City", xmp::kNsPhotoshop, "City"},
    {"photoshop:State", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/State=State or Province", xmp::kNsPhotoshop, "State"},
    {"photoshop:Country", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/Country=Country", xmp::kNsPhotoshop, "Country"},
    {"photoshop:Headline", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/Headline=Headline", xmp::kNsPhotoshop, "Headline"},
    {"photoshop:Credit", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/Credit=Credit", xmp::kNsPhotoshop, "Credit"},
    {"photoshop:Instructions", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/Instructions=Instructions", xmp::kNsPhotoshop, "Instructions"},
    {"photoshop:DateCreated", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/DateCreated=Date of Content", xmp::kNsPhotoshop, "DateCreated"},
    {"Iptc4xmpCore:Location", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/Location=Sublocation", xmp::kNsIptcCore, "Location"},
    {"Iptc4xmpCore:CountryCode", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/CountryCode=Country Code", xmp::kNsIptcCore, "CountryCode"},
    {"nonRealTimeMeta:captureFps", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/captureFps=Capture Frame Rate", xmp::kNsNonRealTimeMeta, "captureFps"},
    {"nonRealTimeMeta:CaptureGammaEquation", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/CaptureGammaEquation=Capture Gamma", xmp::kNsNonRealTimeMeta, "CaptureGammaEquation"},
    {"nonRealTimeMeta:CaptureColorPrimaries", "$$$/Ortlane/Provider/XMPFilesMetadata/Property/CaptureColorPrimaries=Capture Color Primaries", xmp::kNsNonRealTimeMeta, "CaptureColorPrimaries"},
};
// clang-format on

namespace {

ValueSource SourceOf(xmp::MetadataSource source) {
  switch (source) {
    case xmp::MetadataSource::kSidecar:
      return ValueSource::kSidecar;
    case xmp::MetadataSource::kXMP:
      return ValueSource::kXMP;
    case xmp::MetadataSource::kRecord:
      return ValueSource::kRecord;
    case xmp::MetadataSource::kIndex:
      return ValueSource::kIndex;
    case xmp::MetadataSource::kHeader:
      break;
  }
  return ValueSource::kNative;
}

// Returns no parts if the file's only metadata is XMP that can't be parsed.
std::vector<xmp::MetadataPart> ReadParts(const std::string& path) {
  try {
    xmp::SXMPFiles files;
    if (!files.OpenFile(path, xmp::kXMP_UnknownFile, xmp::kXMPFiles_OpenForRead)) return {};
    return files.GetParts();
  } catch (...) {
    return {};  // errors of one file aren't reported to the caller
  }
}

// The property as text, whatever its form.
std::string PropertyText(const xmp::SXMPMeta& meta, const FurtherProperty& property) {
  if (!meta.HasProperty(property.schemaNS, property.propertyName)) return {};
  const XMPCrossReference row{property.propertyName, property.labelKey, property.schemaNS};
  for (const auto rule : {FieldRules::Unmodified, FieldRules::AlternativeText}) {
    if (const Text text = rule(meta, row); text && !text->empty()) return *text;
  }
  std::string joined;
  std::string item;
  try {
    for (std::int32_t i = 1; meta.GetArrayItem(row.schemaNS, row.propertyName, i, &item); ++i) {
      joined += (joined.empty() ? "" : "; ") + item;
    }
  } catch (const xmp::XMP_Error&) {
    return {};  // a structure
  }
  return joined;
}

bool HasText(const std::string& text) {
  return text.find_first_not_of(kFrameCountSeparator) != text.npos;
}

// The texts of all fields and further properties, without empty ones.
std::map<std::string, std::string> TextsOf(const xmp::SXMPMeta& meta) {
  std::map<std::string, std::string> texts;
  for (auto& [name, value] : ConvertFields(meta, XMPFieldBits().set())) {
    const auto* text = value.get_if<std::string>();
    if (text != nullptr && HasText(*text)) texts[name] = *text;
  }
  for (const FurtherProperty& property : kFurtherProperties) {
    std::string text = PropertyText(meta, property);
    if (!text.empty()) texts[property.name] = std::move(text);
  }
  return texts;
}

void AddOther(ValueSource from, const std::string& text, SourcedValue& value) {
  const auto same = [&](const SourceValue& other) {
    return other.from == from && other.value == text;
  };
  if (text == value.value || std::ranges::any_of(value.others, same)) return;
  value.others.push_back({from, text});
}

}  // namespace

const char* GetSourceName(ValueSource source) noexcept {
  switch (source) {
    case ValueSource::kSidecar:
      return "sidecar";
    case ValueSource::kXMP:
      return "xmp";
    case ValueSource::kRecord:
      return "record";
    case ValueSource::kIndex:
      return "index";
    case ValueSource::kNative:
      return "native";
    case ValueSource::kProvider:
      break;
  }
  return "provider";
}

SourcedValueMap GetValueSources(const std::string& path) {
  const foundation::CallScope scope;  // the lists of a card are read once for several properties
  const platform::ShareScope shares(path);
  xmp::SXMPMeta merged;
  std::vector<std::pair<ValueSource, std::map<std::string, std::string>>> texts;
  for (const xmp::MetadataPart& part : ReadParts(path)) {
    merged.FillFrom(part.properties);
    texts.emplace_back(SourceOf(part.source), TextsOf(part.properties));
  }
  SourcedValueMap values;
  for (auto& [name, text] : TextsOf(merged)) {
    SourcedValue value{ValueSource::kNative, text, {}};
    bool found = false;
    for (const auto& [from, ofPart] : texts) {
      const auto own = ofPart.find(name);
      if (own == ofPart.end()) continue;
      if (!std::exchange(found, true)) {
        value.from = from;
      } else {
        AddOther(from, own->second, value);
      }
    }
    values.emplace(name, std::move(value));
  }
  return values;
}

void AddProviderValues(const FieldValueMap& fields, SourcedValueMap& sources) {
  const FieldNameSet paths{kPathField, kExtraPathField, kProxyPathField};
  for (const XMPCrossReference& row : kXMPCrossReference) {
    const auto field = fields.find(row.propertyName);
    if (field == fields.end() || paths.contains(field->first)) continue;
    const auto* text = field->second.get_if<std::string>();
    if (text == nullptr || !HasText(*text)) continue;
    const auto [entry, added] =
        sources.try_emplace(field->first, SourcedValue{ValueSource::kProvider, *text, {}});
    if (!added) AddOther(ValueSource::kProvider, *text, entry->second);
  }
}

}  // namespace Sorvik::XMPSupport
