// SPDX-License-Identifier: MIT
#include "providers/cards/ProviderXDCAM.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/platform/FileSystem.h"
#include "frame/FieldValues.h"
#include "frame/Recognition.h"
#include "providers/cards/XDCAMFiles.h"
#include "providers/common/ClipReadAhead.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {

using namespace xdcam;

namespace {

using foundation::CardFolder;
using foundation::CountCodeUnits;
using foundation::ExistsOnCard;
using foundation::JoinPath;
using foundation::Lookup;

constexpr std::size_t kMinProavNames = 4;
constexpr LayoutName kProavLayout[] = {{kClpr, true},           {"INDEX.XML", true},
                                       {"DISCMETA.XML", true},  {"DISCINFO.XML", true},
                                       {"DISCINFO.BUP", false}, {"INDEX.BUP", false}};

constexpr std::size_t kMinDiscNames = 6;
constexpr LayoutName kDiscLayout[] = {{kClipFolder, true},    {"Sub", true},
                                      {"MEDIAPRO.XML", true}, {"DISCMETA.XML", true},
                                      {"General", false},     {"ALIAS.XML", false}};

Recognition MatchFolder(const CardFolder& folder, std::span<const LayoutName> names,
                        std::size_t minNames) {
  const std::vector<std::string> listed = folder.VisibleNames();
  if (listed.size() < minNames) return Recognition::kNone;
  LayoutMatch layout(names);
  bool clean = true;
  for (const std::string& name : listed) {
    if (layout.Add(name)) continue;
    clean = false;
    if (layout.IsComplete()) break;
  }
  return layout.IsComplete() ? Recognized(clean) : Recognition::kNone;
}

// One access to the disk excludes most other folders before any listing.
Recognition RecognizeProav(const std::string& path) {
  const auto proav = CardFolder::Of(path);
  if (!proav->KindOf(kClpr, Lookup::kDisk)) return Recognition::kNone;
  return MatchFolder(*proav, kProavLayout, kMinProavNames);
}

Recognition RecognizeDisc(const std::string& root) {
  if (!HasClipFolder(root)) return Recognition::kNone;
  return MatchFolder(*CardFolder::Of(root), kDiscLayout, kMinDiscNames);
}

// Sets path and name of the clip's essence. Returns false and sets nothing if it is missing.
bool FillClipEntry(const std::string& xmlPath, Lookup lookup, FieldValueMap& values) {
  const std::string essence = EssenceForClipXml(xmlPath, lookup);
  if (essence.empty() || !ExistsOnCard(essence, lookup)) return false;
  values.insert_or_assign(kPathField, any_regular_t(essence));
  values.insert_or_assign(kNameField, any_regular_t(std::string(foundation::FileStem(essence))));
  return true;
}

void AddExtraPaths(const std::string& root, const std::string& xmlPath, bool onDisc,
                   FieldValueMap& values) {
  if (!onDisc) {
    values.insert_or_assign(kExtraPathField, PathList(ProavExtraPaths(root, xmlPath)));
    return;
  }
  auto files = DiscExtraPaths(root, xmlPath);
  if (!files) return;
  // The title in the list is used only with the extra paths: nothing else reads the list.
  if (!files->title.empty()) values.insert_or_assign(kNameField, any_regular_t(files->title));
  values.insert_or_assign(kExtraPathField, PathList(std::move(files->extraPaths)));
}

// The essence for a thumbnail, by the text of the key alone; empty if it isn't a key.
std::string EssenceForThumbnail(std::string_view path, std::string_view key) {
  constexpr std::size_t kMinKeyLength = 8;
  const auto end = key.rfind(kClipXmlEnd);
  if (key.size() < kMinKeyLength || end == key.npos) return {};
  const std::string stem(key.substr(0, end));
  // Only a folder on the medium counts: a parent directory may be called CLPR, too.
  const auto clipFolder = key.rfind(kClpr);
  if (clipFolder == key.npos || CountCodeUnits(key.substr(0, clipFolder)) <= CountCodeUnits(path)) {
    return stem + ".MXF";
  }
  std::string video = stem + "V01.MXF";
  return ExistsOnCard(video, Lookup::kDisk) ? video : stem + "A01.MXF";
}

// The clip XML files of the medium.
std::vector<std::string> ListClipXmlFiles(const std::string& root, bool onDisc) {
  if (!onDisc) {
    auto files = foundation::ListFilesBelow(JoinPath(JoinPath(root, kProav), kClpr), ".XML");
    std::erase_if(files, foundation::IsHidden);
    return files;
  }
  const auto folder = CardFolder::Of(JoinPath(root, kClipFolder));
  std::vector<std::string> files = folder->VisibleFiles(".XML");
  for (std::string& file : files) file = folder->PathOf(file);
  return files;
}

}  // namespace

ProviderXDCAM::ProviderXDCAM()
    : ClipProvider({.identification = "com.halvane.Merisk.ProviderXDCAM",
                    .uiString = "$$$/Ortlane/Libraries/Sorvik/XDCAMHDUIString=XDCAM-HD",
                    .defaultFields = {kNameField, kPathField},
                    .labelFields = {"Name", "Path", "CreateDate", "ModifyDate", "MetadataDate",
                                    "videoFrameSize", "videoFrameRate", "videoPixelAspectRatio",
                                    "duration", "videoCompressor", "audioCompressor", "cameraModel",
                                    "description", "SerialNumber", "Make", "Model"},
                    .layout = {.rootNames = {kClipFolder, kProav},
                               .ownFolders = {kClipFolder, kProav, "Sub", "Thmbnl", "General",
                                              "Edit", "UserData", "Take"}}}) {}

ContentMap ProviderXDCAM::GetContent(const std::string& path, const std::string& key,
                                     const FieldNameSet& fields) const {
  const foundation::CallScope scope;
  const std::string root(foundation::WithoutTrailingSlash(path));
  FieldValueMap values = XMPSupport::MakeValue(key, XMPSupport::ParseFields(fields));
  if (FillClipEntry(key, Lookup::kDisk, values) && fields.contains(kExtraPathField)) {
    AddExtraPaths(root, key, IsInDiscLayout(key), values);
  }
  ContentMap content;
  content.emplace(key, std::move(values));
  return content;
}

ContentMap ProviderXDCAM::GetContent(const std::string& path, const FieldNameSet& fields,
                                     ProviderRequest* request) const {
  const foundation::CallScope scope;
  const std::string root(foundation::WithoutTrailingSlash(path));
  const bool onDisc = HasClipFolder(root);
  const XMPSupport::XMPFieldBits bits = XMPSupport::ParseFields(fields);
  const auto clips = ListClipXmlFiles(root, onDisc);
  auto metadata = ReadMetadataAhead(clips, bits, request);
  ContentMap content;
  for (std::size_t i = 0; i < clips.size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    const std::string& xmlPath = clips[i];
    FieldValueMap values = metadata.Take(i);
    if (FillClipEntry(xmlPath, Lookup::kListing, values)) {
      if (fields.contains(kProxyPathField)) {
        if (const auto proxy = ProxyPathOf(root, xmlPath)) {
          values.insert_or_assign(kProxyPathField, any_regular_t(*proxy));
        }
      }
      if (fields.contains(kExtraPathField)) AddExtraPaths(root, xmlPath, onDisc, values);
    }
    if (!values.empty()) content.insert_or_assign(xmlPath, std::move(values));
  }
  return content;
}

int ProviderXDCAM::CanProvideFor(const std::string& path) const {
  const foundation::CallScope scope;
  if (!foundation::IsValidPath(path) || platform::KindOf(path) != platform::FileKind::kDirectory) {
    return ScoreOf(Recognition::kNone);
  }
  // With a folder PROAV the disc layout isn't considered, even if PROAV is incomplete.
  const std::string proav = JoinPath(path, kProav);
  return ScoreOf(platform::KindOf(proav) ? RecognizeProav(proav) : RecognizeDisc(path));
}

Bitplate** ProviderXDCAM::GetThumbnail(const std::string& path, const std::string& key, int width,
                                       int height, ProviderRequest*) const {
  const int h = GetMaximumThumbnailHeight(height);
  const int w = std::min(width, h);
  const std::string essence = EssenceForThumbnail(path, key);
  if (essence.empty()) return nullptr;
  return GetFolderThumbnail(std::string(foundation::ParentFolder(essence)),
                            std::string(foundation::FileName(essence)), w, h);
}

}  // namespace Sorvik
