// SPDX-License-Identifier: MIT
#include "providers/modern/ProviderDCIM.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/FolderScan.h"
#include "frame/FieldValues.h"
#include "frame/Recognition.h"
#include "providers/common/ClipReadAhead.h"
#include "providers/modern/DCIMCard.h"
#include "providers/modern/PartDurations.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

using dcim::Card;
using dcim::Object;
using foundation::HasExtension;
using platform::ScannedType;

// A folder that can't be listed may contain clips.
bool MayHaveVisibleItem(const std::string& folder) {
  bool found = false;
  const bool isListed = platform::ScanFolder(folder, [&found](std::string_view name, ScannedType) {
    found = !foundation::IsHidden(name);
    return !found;
  });
  return found || !isListed;
}

Recognition Recognize(const std::string& root) {
  const std::string dcim = Card::FolderOf(root);
  if (dcim.empty()) return Recognition::kNone;
  bool hasCameraFolder = false;
  bool hasOther = false;
  const bool isListed = platform::ScanFolder(dcim, [&](std::string_view name, ScannedType) {
    if (foundation::IsHidden(name)) return true;
    if (dcim::MakerOfFolder(name) == nullptr) {
      hasOther = true;
    } else {
      hasCameraFolder = MayHaveVisibleItem(foundation::JoinPath(dcim, name));
    }
    return !hasCameraFolder;
  });
  if (!isListed) return Recognition::kWithReservation;
  return hasCameraFolder || hasOther ? Recognized(hasCameraFolder) : Recognition::kNone;
}

// The fields that come from the files instead of their names.
FieldNameSet MetadataFields(const FieldNameSet& fields) {
  FieldNameSet wanted = fields;
  for (const char* name : {kNameField, kPathField, kExtraPathField, kProxyPathField}) {
    wanted.erase(name);
  }
  return XMPSupport::ParseFields(wanted).any() ? wanted : FieldNameSet();
}

bool HasDuration(const Object& object) {
  return object.PartNumbering() == dcim::Numbering::kChapters ||
         object.PartNumbering() == dcim::Numbering::kLoop;
}

FieldValueMap MetadataOfMedia(const Object& object, const FieldNameSet& wanted) {
  if (object.parts.empty()) {
    return object.proxies.empty()
               ? FieldValueMap()
               : XMPSupport::MakeValue(object.proxies.front(), XMPSupport::ParseFields(wanted));
  }
  const std::string& first = object.parts.front().path;
  if (object.parts.size() == 1 || !HasDuration(object)) {
    return XMPSupport::MakeValue(first, XMPSupport::ParseFields(wanted));
  }
  PartDurations durations(wanted);
  FieldValueMap values =
      XMPSupport::MakeValue(first, XMPSupport::ParseFields(durations.FieldsOfFirst()));
  for (std::size_t i = 1; durations.AreWanted() && i < object.parts.size(); ++i) {
    durations.Add(TextOf(
        XMPSupport::MakeValue(object.parts[i].path, XMPSupport::ParseFields({kFrameCountField})),
        kFrameCountField));
  }
  durations.SetTotal(values);
  return values;
}

// Fills the position from the flight data next to the recording.
void AddPosition(const Object& object, const FieldNameSet& wanted, FieldValueMap& values) {
  FieldNameSet missing;
  for (const char* name : {"GPSLatitude", "GPSLongitude", "GPSAltitude", "GPSAltitudeRef"}) {
    if (wanted.contains(name) && TextOf(values, name).empty()) missing.insert(name);
  }
  if (missing.empty()) return;
  const auto subtitles = std::ranges::find_if(
      object.files, [](const std::string& file) { return HasExtension(file, ".srt"); });
  if (subtitles == object.files.end()) return;
  for (auto& [name, value] : XMPSupport::MakeValue(*subtitles, XMPSupport::ParseFields(missing))) {
    values.insert_or_assign(name, std::move(value));
  }
}

FieldValueMap MetadataOf(const Object& object, const FieldNameSet& wanted) {
  if (wanted.empty()) return {};
  FieldValueMap values = MetadataOfMedia(object, wanted);
  AddPosition(object, wanted, values);
  return values;
}

// The MP4 next to a MOV is a proxy if the MOV is a raw recording; otherwise it is another clip.
std::string ProxyOfRawMovie(const Object& object) {
  const auto proxy = std::ranges::find_if(object.files, [&object](const std::string& file) {
    return HasExtension(file, object.maker->proxyExtension);
  });
  if (object.maker->proxyExtension.empty() || proxy == object.files.end() || object.parts.empty() ||
      !HasExtension(object.parts.front().path, ".mov")) {
    return {};
  }
  const FieldValueMap codec = XMPSupport::MakeValue(object.parts.front().path,
                                                    XMPSupport::ParseFields({"videoCompressor"}));
  return TextOf(codec, "videoCompressor").starts_with("ProRes RAW") ? *proxy : std::string();
}

std::vector<std::string> ExtraPaths(const Object& object) {
  std::vector<std::string> paths;
  for (std::size_t i = 1; i < object.parts.size(); ++i) paths.push_back(object.parts[i].path);
  for (const auto* more : {&object.proxies, &object.thumbnails, &object.files}) {
    paths.insert(paths.end(), more->begin(), more->end());
  }
  return paths;
}

FieldValueMap MakeEntry(const Object& object, const FieldNameSet& fields,
                        const FieldNameSet& metadataFields) {
  FieldValueMap values = MetadataOf(object, metadataFields);
  const std::string_view name = foundation::FileName(object.key);
  values.insert_or_assign(kNameField, any_regular_t(std::string(name)));
  if (!object.parts.empty()) {
    values.insert_or_assign(kPathField, any_regular_t(object.parts.front().path));
  }
  if (fields.contains(kProxyPathField)) {
    std::string proxy = object.proxies.empty() ? ProxyOfRawMovie(object) : object.proxies.front();
    if (!proxy.empty()) values.insert_or_assign(kProxyPathField, any_regular_t(std::move(proxy)));
  }
  if (fields.contains(kExtraPathField)) {
    values.insert_or_assign(kExtraPathField, PathList(ExtraPaths(object)));
  }
  return values;
}

// Valid as long as the card.
std::shared_ptr<const std::vector<const Object*>> AllObjects(const Card& card) {
  const auto objects = std::make_shared<std::vector<const Object*>>();
  for (const auto& folder : card.Folders()) {
    for (const Object& object : folder->Objects()) objects->push_back(&object);
  }
  return objects;
}

// The files that can show the object, best first.
std::vector<std::string> PicturesOf(const Object& object) {
  std::vector<std::string> pictures = object.thumbnails;
  const auto add = [&pictures](const std::string& path) {
    for (const char* extension : {".jpg", ".jpeg", ".heic", ".hif", ".png"}) {
      if (HasExtension(path, extension)) return pictures.push_back(path);
    }
  };
  if (!object.parts.empty()) add(object.parts.front().path);
  for (const std::string& file : object.files) add(file);
  return pictures;
}

}  // namespace

ProviderDCIM::ProviderDCIM()
    : ClipProvider({.identification = "com.halvane.Merisk.ProviderDCIM",
                    .uiString = "$$$/Ortlane/Libraries/Sorvik/DCIMUIString=Camera card (DCIM)",
                    .defaultFields = {kNameField, "CreateDate", "startTimecode", "duration",
                                      "videoFrameSize", "videoFrameRate", "Model"},
                    .labelFields = {"Name", "Path", "CreateDate", "ModifyDate", "identifier",
                                    "startTimecode", "duration", "videoFrameSize", "videoFrameRate",
                                    "videoPixelAspectRatio", "videoCompressor", "audioSampleRate",
                                    "audioChannelType", "audioCompressor", "Make", "Model",
                                    "SerialNumber", "GPSLatitude", "GPSLongitude"},
                    .layout = {.rootNames = {dcim::kDCIM},
                               .ownFolders = {dcim::kDCIM, dcim::kMisc},
                               .hasClipsByName = true},
                    .maxThumbnailHeight = std::numeric_limits<int>::max()}) {}

ContentMap ProviderDCIM::GetContent(const std::string& path, const std::string& key,
                                    const FieldNameSet& fields) const {
  const foundation::CallScope scope;
  const auto object = dcim::FindObject(std::string(foundation::WithoutTrailingSlash(path)), key);
  if (object == nullptr) return {};
  return {{key, MakeEntry(*object, fields, MetadataFields(fields))}};
}

ContentMap ProviderDCIM::GetContent(const std::string& path, const FieldNameSet& fields,
                                    ProviderRequest* request) const {
  const foundation::CallScope scope;
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  const auto objects = AllObjects(*card);
  foundation::ReadAhead<FieldValueMap> ahead(
      objects->size(),
      [card, objects, fields, metadataFields = MetadataFields(fields)](std::size_t i) {
        return MakeEntry(*(*objects)[i], fields, metadataFields);
      },
      StopWith(request));
  ContentMap content;
  for (std::size_t i = 0; i < objects->size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    content.insert_or_assign((*objects)[i]->key, ahead.Take(i));
  }
  return content;
}

int ProviderDCIM::CanProvideFor(const std::string& path) const {
  const foundation::CallScope scope;
  return ScoreOf(foundation::IsValidPath(path) ? Recognize(path) : Recognition::kNone);
}

Bitplate** ProviderDCIM::GetThumbnail(const std::string& path, const std::string& key, int width,
                                      int height, ProviderRequest*) const {
  const foundation::CallScope scope;
  const std::string root(foundation::WithoutTrailingSlash(path));
  const auto object = dcim::FindObject(root, key);
  if (object == nullptr) return nullptr;
  for (const std::string& picture : PicturesOf(*object)) {
    if (Bitplate** drawn = RenderThumbnailIntoNew(Hestra::MakeString(picture), width, height)) {
      return drawn;
    }
  }
  if (object->parts.empty()) return nullptr;
  const std::string& file = object->parts.front().path;
  const int side = std::min(height, kIconHeight);
  return GetFolderThumbnail(std::string(foundation::ParentFolder(file)),
                            std::string(foundation::FileName(file)), std::min(width, side), side);
}

std::optional<FileGroup> ProviderDCIM::GroupOf(const std::string& folder,
                                               const std::string& name) const {
  const dcim::ObjectFolder listed(folder, {}, dcim::MakerOfFolder(foundation::FileName(folder)));
  const std::string path = foundation::JoinPath(folder, name);
  for (const Object& object : listed.Objects()) {
    FileGroup group;
    for (const dcim::Part& part : object.parts) group.parts.push_back(part.path);
    for (const auto* more : {&object.proxies, &object.thumbnails, &object.files}) {
      group.others.insert(group.others.end(), more->begin(), more->end());
    }
    if (!std::ranges::count(group.parts, path) && !std::ranges::count(group.others, path)) {
      continue;
    }
    group.name = object.key;
    group.proxy = object.proxies.empty() ? ProxyOfRawMovie(object) : object.proxies.front();
    return group;
  }
  return std::nullopt;
}

}  // namespace Sorvik
