// SPDX-License-Identifier: MIT
#include "providers/cards/ProviderXDCAM.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "frame/FieldValues.h"
#include "providers/cards/XDCAMFiles.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {

using namespace xdcam;

namespace {

namespace Directory = Hestra::Directory;
namespace PathUtils = Hestra::PathUtils;
using foundation::IsPresent;
using foundation::Lookup;
using Hestra::MakeStdString;
using Hestra::MakeString;
using PathUtils::CombinePaths;

constexpr int kScoreCard = 100;
constexpr int kScoreWithReservation = 40;

struct KnownName {
  std::u16string_view name;
  unsigned bit;  // 0 for what may be there and needn't
};

struct Layout {
  std::size_t minEntries;
  unsigned complete;  // all bits of what must be there
  std::vector<KnownName> names;
};

const Layout& ProavLayout() {
  static const Layout layout{4,
                             17056,
                             {{kClpr, 0x200},
                              {u"INDEX.XML", 0x20},
                              {u"DISCMETA.XML", 0x80},
                              {u"DISCINFO.XML", 0x4000},
                              {u"DISCINFO.BUP", 0},
                              {u"INDEX.BUP", 0}}};
  return layout;
}

const Layout& DiscLayout() {
  static const Layout layout{6,
                             197,
                             {{kClipFolder, 1},
                              {u"Sub", 4},
                              {u"MEDIAPRO.XML", 64},
                              {u"DISCMETA.XML", 128},
                              {u"General", 0},
                              {u"ALIAS.XML", 0}}};
  return layout;
}

// Nothing if `folder` doesn't have the layout; else whether something else was seen in it.
std::optional<bool> FitsLayout(const UTF16String& folder, const Layout& layout) {
  auto entries = Directory::GetContainedPaths(folder);
  PathUtils::FilterHiddenFiles(entries);
  if (entries.size() < layout.minEntries) return std::nullopt;
  unsigned mask = 0;
  bool impure = false;
  for (const UTF16String& entry : entries) {
    const UTF16String name = PathUtils::GetFullFilePart(entry);
    const auto known = std::ranges::find(layout.names, name, &KnownName::name);
    if (known != layout.names.end()) {
      mask |= known->bit;
      continue;
    }
    impure = true;
    if (mask == layout.complete) break;
  }
  return mask == layout.complete ? std::optional(impure) : std::nullopt;
}

std::optional<bool> IsProavStructure(const UTF16String& proav) {
  // One stat tells most other folders of that name apart.
  if (!PathUtils::ExistsOnDisk(CombinePaths(proav, kClpr))) return std::nullopt;
  return FitsLayout(proav, ProavLayout());
}

std::optional<bool> IsDiscStructure(const UTF16String& root) {
  if (!PathUtils::ExistsOnDisk(CombinePaths(root, kClipFolder))) return std::nullopt;
  return FitsLayout(root, DiscLayout());
}

// Sets path and name of the clip's essence. False, and nothing set, if it isn't there.
bool FillClipEntry(const UTF16String& xmlPath, Lookup lookup, FieldValueMap& values) {
  const UTF16String essence = EssenceForClipXml(xmlPath, lookup);
  if (essence.empty() || !IsPresent(essence, lookup)) return false;
  values.insert_or_assign(kPathField, any_regular_t(MakeStdString(essence)));
  values.insert_or_assign(kNameField,
                          any_regular_t(MakeStdString(PathUtils::GetFilePart(essence))));
  return true;
}

void AddExtraPaths(const UTF16String& root, const UTF16String& xmlPath, bool onDisc,
                   FieldValueMap& values) {
  if (!onDisc) {
    values.insert_or_assign(kExtraPathField, PathList(ProavExtraPaths(root, xmlPath)));
    return;
  }
  const auto files = DiscExtraPaths(root, xmlPath);
  if (!files) return;
  // The list's name for the clip comes with the paths alone: nothing else reads the list.
  if (!files->title.empty()) {
    values.insert_or_assign(kNameField, any_regular_t(MakeStdString(files->title)));
  }
  values.insert_or_assign(kExtraPathField, PathList(files->extraPaths));
}

// The essence by the text of the key alone, as the thumbnail needs it; empty if it is no key.
UTF16String EssenceForThumbnail(const UTF16String& path, const UTF16String& key) {
  constexpr std::size_t kMinKeyLength = 8;
  const auto end = key.rfind(kClipXmlEnd);
  if (key.size() < kMinKeyLength || end == key.npos) return {};
  const UTF16String stem = key.substr(0, end);
  // A folder of that name above the medium doesn't count.
  const auto clipFolder = key.rfind(kClpr);
  if (clipFolder == key.npos || clipFolder <= path.size()) return stem + u".MXF";
  UTF16String video = stem + u"V01.MXF";
  return IsPresent(video, Lookup::kDisk) ? video : stem + u"A01.MXF";
}

}  // namespace

ProviderXDCAM::ProviderXDCAM()
    : ClipProvider({.identification = "com.halvane.Merisk.ProviderXDCAM",
                    .uiString = "$$$/Ortlane/Libraries/Sorvik/XDCAMHDUIString=XDCAM-HD",
                    .defaultFields = {kNameField, kPathField},
                    .labelFields = {"Name", "Path", "CreateDate", "ModifyDate", "MetadataDate",
                                    "videoFrameSize", "videoFrameRate", "videoPixelAspectRatio",
                                    "duration", "videoCompressor", "audioCompressor", "cameraModel",
                                    "description", "SerialNumber", "Make", "Model"}}) {}

ContentMap ProviderXDCAM::GetContent(const std::string& path, const std::string& key,
                                     const FieldNameSet& fields) const {
  const foundation::CallScope scope;
  const UTF16String root = PathUtils::RemoveTrailingSlash(MakeString(path));
  const UTF16String xmlPath = MakeString(key);
  FieldValueMap values = XMPSupport::MakeValue(key, XMPSupport::ParseFields(fields));
  if (FillClipEntry(xmlPath, Lookup::kDisk, values) && fields.contains(kExtraPathField)) {
    AddExtraPaths(root, xmlPath, IsInDiscLayout(xmlPath), values);
  }
  ContentMap content;
  content.emplace(key, std::move(values));
  return content;
}

ContentMap ProviderXDCAM::GetContent(const std::string& path, const FieldNameSet& fields,
                                     ProviderRequest* request) const {
  const foundation::CallScope scope;
  const UTF16String root = PathUtils::RemoveTrailingSlash(MakeString(path));
  UTF16String clipFolder = CombinePaths(root, kClipFolder);
  const bool onDisc = PathUtils::ExistsOnDisk(clipFolder);
  if (!onDisc) clipFolder = CombinePaths(CombinePaths(root, kProav), kClpr);
  auto clips = Directory::GetContainedFilePaths(clipFolder, u".XML", !onDisc);
  PathUtils::FilterHiddenFiles(clips);
  const XMPSupport::XMPFieldBits bits = XMPSupport::ParseFields(fields);
  ContentMap content;
  for (const UTF16String& xmlPath : clips) {
    if (ProviderRequest::TestAborted(request)) return {};
    const std::string key = MakeStdString(xmlPath);
    FieldValueMap values = XMPSupport::MakeValue(key, bits);
    if (FillClipEntry(xmlPath, Lookup::kListing, values)) {
      if (fields.contains(kProxyPathField)) {
        if (const auto proxy = ProxyPathOf(root, xmlPath)) {
          values.insert_or_assign(kProxyPathField, any_regular_t(MakeStdString(*proxy)));
        }
      }
      if (fields.contains(kExtraPathField)) AddExtraPaths(root, xmlPath, onDisc, values);
    }
    if (!values.empty()) content.insert_or_assign(key, std::move(values));
  }
  return content;
}

int ProviderXDCAM::CanProvideFor(const std::string& path) const {
  const foundation::CallScope scope;
  const UTF16String root = MakeString(path);
  if (!PathUtils::IsValidPath(root) || !PathUtils::IsDirectory(root)) return 0;
  const UTF16String proav = CombinePaths(root, kProav);
  const auto impure =
      PathUtils::ExistsOnDisk(proav) ? IsProavStructure(proav) : IsDiscStructure(root);
  if (!impure) return 0;
  return *impure ? kScoreWithReservation : kScoreCard;
}

Bitplate** ProviderXDCAM::GetThumbnail(const std::string& path, const std::string& key, int width,
                                       int height, ProviderRequest*) const {
  const int h = GetMaximumThumbnailHeight(height);
  const int w = std::min(width, h);
  const UTF16String essence = EssenceForThumbnail(MakeString(path), MakeString(key));
  if (essence.empty()) return nullptr;
  const UTF16String folder =
      PathUtils::RemoveTrailingSlash(PathUtils::GetFullDirectoryPart(essence));
  return GetFolderThumbnail(MakeStdString(folder),
                            MakeStdString(PathUtils::GetFullFilePart(essence)), w, h);
}

}  // namespace Sorvik
