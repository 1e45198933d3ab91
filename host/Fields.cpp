// SPDX-License-Identifier: MIT
#include "Fields.h"

#include <algorithm>
#include <set>

#include "Failure.h"
#include "SorvikProvider/foundation/Localizer.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "Suggestions.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::FieldLabelMap;
using Sorvik::XMPSupport::kXMPCrossReference;
using Text16 = Hestra::UTF16String;

struct MeaningRow {
  std::string_view name;
  std::string_view type;
  std::string_view meaning;
};

constexpr MeaningRow kMeanings[] = {
    {"Name", "text", "name of the entry as the structure shows it"},
    {"Path", "text", "main file of the entry"},
    {"ExtraPath", "list", "further files and folders that belong to the entry"},
    {"ProxyPath", "list", "proxy files of the entry"},
    {"creator", "text", "person or device that created the clip"},
    {"identifier", "text", "unique identifier of the clip, such as its UMID"},
    {"description", "text", "description of the content"},
    {"relation", "text", "identifiers that link the parts of a shot"},
    {"CreateDate", "date", "date and time of creation"},
    {"CreatorTool", "text", "program or device that wrote the metadata"},
    {"Label", "text", "label given by a user"},
    {"MetadataDate", "date", "date of the last change of the metadata"},
    {"ModifyDate", "date", "date of the last change"},
    {"Nickname", "text", "informal name"},
    {"Rating", "number", "rating by a user, -1 to 5"},
    {"projectRef", "text", "project that the file was made with"},
    {"videoFrameRate", "rate", "frames per second"},
    {"videoFrameSize", "text", "width and height of the picture in pixels"},
    {"videoPixelDepth", "text", "bits per sample of the picture"},
    {"videoPixelAspectRatio", "number", "width of a pixel divided by its height"},
    {"videoColorSpace", "text", "colour space of the picture"},
    {"videoAlphaMode", "text", "kind of alpha channel"},
    {"videoAlphaUnityIsTransparent", "flag", "whether an alpha of 1 is transparent"},
    {"videoCompressor", "text", "codec of the picture"},
    {"videoFieldOrder", "text", "Upper, Lower or Progressive"},
    {"pullDown", "text", "phase of the 3:2 pulldown"},
    {"audioSampleRate", "number", "audio samples per second"},
    {"audioSampleType", "text", "size and kind of an audio sample"},
    {"audioChannelType", "text", "layout of the audio channels"},
    {"audioCompressor", "text", "codec of the sound"},
    {"speakerPlacement", "text", "angles of the speakers"},
    {"fileDataRate", "text", "data rate of the file"},
    {"startTimecode", "timecode", "timecode of the first frame"},
    {"duration", "duration", "duration as HH:MM:SS:FF"},
    {"scale", "text", "seconds per unit of the duration"},
    {"good", "flag", "whether the take is marked as good"},
    {"scene", "text", "scene of the shot"},
    {"shotName", "text", "name of the shot"},
    {"shotNumber", "text", "number of the shot"},
    {"takeNumber", "number", "number of the take"},
    {"shotLocation", "text", "place of the shoot"},
    {"shotDay", "text", "day of the shoot, such as its number"},
    {"shotDate", "date", "date and time of the shoot"},
    {"camera", "text", "name of the camera"},
    {"cameraModel", "text", "make and model of the camera"},
    {"cameraMove", "text", "movement of the camera"},
    {"comment", "text", "comment"},
    {"logComment", "text", "comment of the log"},
    {"videoModDate", "date", "date of the last change of the picture"},
    {"audioModDate", "date", "date of the last change of the sound"},
    {"metadataModDate", "date", "date of the last change of the metadata"},
    {"artist", "text", "performer"},
    {"album", "text", "album"},
    {"trackNumber", "number", "number on the album"},
    {"genre", "text", "genre"},
    {"copyright", "text", "copyright notice"},
    {"releaseDate", "date", "date of release"},
    {"composer", "text", "composer"},
    {"engineer", "text", "recording engineer"},
    {"tempo", "number", "beats per minute"},
    {"instrument", "text", "instrument"},
    {"introTime", "text", "duration of the introduction"},
    {"outCue", "text", "position at which the next item starts"},
    {"relativeTimestamp", "text", "start relative to the project"},
    {"loop", "flag", "whether the sound is a loop"},
    {"numberOfBeats", "number", "number of beats"},
    {"frameCount", "text", "number of frames and seconds per frame"},
    {"SerialNumber", "text", "serial number of the camera"},
    {"Make", "text", "manufacturer of the camera"},
    {"Model", "text", "model of the camera"},
    {"GPSAltitude", "text", "altitude in metres"},
    {"GPSAltitudeRef", "text", "above or below sea level"},
    {"GPSLatitude", "text", "latitude"},
    {"GPSLongitude", "text", "longitude"},
    {"GPSProcessingMethod", "text", "how the position was measured"},
    {"software", "text", "software of the camera"},
    {"WhiteBalance", "text", "white balance"},
    {"02", "text", "path as shown to users"},
    {"03", "flag", "attribute: to be archived"},
    {"04", "flag", "attribute: compressed"},
    {"05", "flag", "attribute: device, FIFO or socket"},
    {"06", "flag", "attribute: directory"},
    {"07", "flag", "attribute: encrypted"},
    {"08", "flag", "attribute: hidden"},
    {"09", "flag", "attribute: file without other attributes"},
    {"10", "flag", "attribute: not indexed"},
    {"11", "flag", "attribute: offline"},
    {"12", "flag", "attribute: read-only"},
    {"13", "flag", "attribute: symbolic link"},
    {"14", "flag", "attribute: sparse file"},
    {"15", "flag", "attribute: system file"},
    {"16", "flag", "attribute: temporary file"},
    {"18", "text", "short name on a FAT file system"},
    {"19", "date", "date of creation"},
    {"20", "date", "date of last access"},
    {"21", "date", "date of last modification"},
    {"26", "size", "size in bytes"},
};

// A field and a text that selects it: its name or one of its labels.
struct Selector {
  std::string text;
  std::string field;
};

Text16 Folded(std::string_view text) {
  return tarnwick::utility::FoldCase(Hestra::MakeString(text));
}

std::string DefaultText(std::string_view labelKey) {
  return std::string(labelKey.substr(std::min(labelKey.find('=') + 1, labelKey.size())));
}

void AddLabels(std::vector<Selector>& selectors, const FieldLabelMap& labels) {
  const auto& localizer = tarnwick::config::Localizer::Get();
  for (const auto& [field, labelKey] : labels) {
    selectors.push_back({localizer.GetUTF8String(labelKey), field});
    selectors.push_back({DefaultText(labelKey), field});
  }
}

// Names first, then labels of the provider in use, of the field table and of the other providers,
// so that a label which several fields have selects that of the provider.
std::vector<Selector> AllSelectors(const FieldLabelMap& labels) {
  std::vector<Selector> selectors;
  FieldLabelMap table;
  for (const auto& row : kXMPCrossReference) {
    selectors.push_back({row.propertyName, row.propertyName});
    table[row.propertyName] = row.labelKey;
  }
  const auto& providers = Sorvik::ProviderHost::GetAllProviders();
  for (const Sorvik::ProviderWrapper* provider : providers) {
    for (const std::string& field : provider->GetFieldList()) selectors.push_back({field, field});
  }
  AddLabels(selectors, labels);
  AddLabels(selectors, table);
  for (const Sorvik::ProviderWrapper* provider : providers) {
    AddLabels(selectors, provider->GetFieldLabelList());
  }
  return selectors;
}

std::string NearestFields(const std::vector<Selector>& selectors, const std::string& typed) {
  std::vector<Suggestion> known;
  for (const Selector& selector : selectors) {
    // A number means nothing to a user.
    const bool number = selector.field.find_first_not_of("0123456789") == std::string::npos;
    known.push_back({selector.text, number ? selector.text : selector.field});
  }
  return NearestNames(known, typed);
}

std::string ResolveField(const std::vector<Selector>& selectors, const std::string& typed) {
  for (const Selector& selector : selectors) {
    if (selector.text == typed) return selector.field;
  }
  const Text16 folded = Folded(typed);
  for (const Selector& selector : selectors) {
    if (Folded(selector.text) == folded) return selector.field;
  }
  throw Failure(kUsageError, "--fields: unknown field '" + typed +
                                 "' (nearest: " + NearestFields(selectors, typed) + ")");
}

}  // namespace

FieldInfo DescribeField(const FieldLabelMap& labels, const std::string& name) {
  FieldInfo info{name, LabelOf(labels, name), "text", ""};
  const auto* const row = std::find_if(std::begin(kMeanings), std::end(kMeanings),
                                       [&](const MeaningRow& known) { return known.name == name; });
  if (row != std::end(kMeanings)) {
    info.type = row->type;
    info.meaning = row->meaning;
  }
  return info;
}

Sorvik::FieldNameList ResolveFields(const std::vector<std::string>& typed,
                                    const FieldLabelMap& labels) {
  if (typed.empty()) return {};
  const std::vector<Selector> selectors = AllSelectors(labels);
  Sorvik::FieldNameList fields;
  for (const std::string& field : typed) {
    std::string name = ResolveField(selectors, field);
    if (std::find(fields.begin(), fields.end(), name) == fields.end()) {
      fields.push_back(std::move(name));
    }
  }
  return fields;
}

}  // namespace host
