// SPDX-License-Identifier: MIT
#include "providers/cards/ProviderP2.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "frame/FieldValues.h"
#include "providers/cards/P2Shots.h"
#include "providers/cards/P2Siblings.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {

using namespace p2;

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

struct RequiredFolder {
  std::u16string_view name;
  unsigned bit;
};
constexpr RequiredFolder kRequiredFolders[] = {
    {kAudio, 1}, {kClip, 2}, {kIcon, 4}, {kProxy, 8}, {kVideo, 16}};
constexpr unsigned kAllFolders = 31;

// Nothing if this is no CONTENTS folder of a card; else whether something foreign lies in it.
std::optional<bool> IsP2ContentsDir(const UTF16String& contents) {
  std::vector<UTF16String> files;
  std::vector<UTF16String> folders;
  Directory::GetContainedFileAndDirectoryPaths(contents, files, folders);
  PathUtils::FilterHiddenFiles(files);
  if (folders.size() < std::size(kRequiredFolders)) return std::nullopt;
  unsigned mask = 0;
  bool extra = false;
  // What is listed behind the last of the five isn't looked at.
  for (auto folder = folders.begin(); folder != folders.end() && mask != kAllFolders; ++folder) {
    const UTF16String name = PathUtils::GetFullFilePart(*folder);
    const auto* required = std::ranges::find(kRequiredFolders, name, &RequiredFolder::name);
    if (required == std::end(kRequiredFolders)) {
      extra = true;
    } else {
      mask |= required->bit;
    }
  }
  if (mask != kAllFolders) return std::nullopt;
  const bool clean =
      files.empty() || (files.size() == 1 && files.front() == CombinePaths(contents, u".DS_Store"));
  return extra || !clean;
}

// The same for a card's root.
std::optional<bool> IsP2CardRoot(const UTF16String& root) {
  std::vector<UTF16String> files;
  std::vector<UTF16String> folders;
  Directory::GetContainedFileAndDirectoryPaths(root, files, folders);
  PathUtils::FilterHiddenFiles(files);
  bool impure = false;
  bool contents = false;
  bool desktop = false;
  for (auto folder = folders.begin(); folder != folders.end() && !(contents && desktop); ++folder) {
    const UTF16String name = PathUtils::GetFullFilePart(*folder);
    if (name == kContents) {
      contents = true;
    } else if (name == u"Desktop") {
      desktop = true;
    } else if (!name.starts_with(u'.')) {
      impure = true;
    }
  }
  if (!contents) return std::nullopt;
  if (!files.empty()) {
    // A lone LASTCLIP.TXT makes up for foreign folders.
    const bool lastClip =
        std::ranges::find(files, CombinePaths(root, u"LASTCLIP.TXT")) != files.end();
    impure = lastClip ? files.size() > 1 : true;
  }
  const auto extra = IsP2ContentsDir(CombinePaths(root, kContents));
  return extra ? std::optional(impure || *extra) : std::nullopt;
}

// A name given by the camera wins, but not one that repeats the clip's identifier.
void ApplyP2ClipName(FieldValueMap& values, const std::string& defaultName) {
  const auto shotName = values.find("shotName");
  std::string name;
  if (!TextOf(values, "shotName").empty()) {
    const auto identifier = values.find("identifier");
    const bool repeats = identifier != values.end() && identifier->second == shotName->second;
    name = repeats ? defaultName : TextOf(values, "shotName");
  } else {
    name = TextOf(values, kNameField);
  }
  values.insert_or_assign(kNameField, any_regular_t(name.empty() ? defaultName : name));
}

// The shots of the card at `path`, with the parts that lie beside it.
P2ShotMap ShotsOfCard(const UTF16String& path, ClipValueCache& cache) {
  P2ShotMap shots;
  for (const UTF16String& xmlPath : ListClipXmlFiles(path)) {
    AddClipToShots(xmlPath, {}, cache, shots);
  }
  ShotIdSet incomplete;
  if (CollectIncompleteShots(shots, incomplete)) {
    ShotCompletingDirVisitor visitor(shots, incomplete, cache);
    VisitSiblingDirectories(path, visitor);
  }
  return shots;
}

// A shot that spans cards shows, on each card, a clip that lies there.
UTF16String ChooseClip(const P2ShotInfo& shot, const UTF16String& path) {
  const UTF16String card = PathUtils::AddTrailingSlash(PathUtils::ToNormalizedPath(path));
  UTF16String primary = PathUtils::ToNormalizedPath(shot.primaryClipPath);
  if (primary.starts_with(card)) return primary;
  const auto other = std::ranges::find_if(
      shot.otherClipPaths, [&card](const UTF16String& clip) { return clip.starts_with(card); });
  return other == shot.otherClipPaths.end() ? primary : *other;
}

void AddShot(P2ShotInfo& shot, const UTF16String& path, const FieldNameSet& fields,
             ClipValueCache& cache, ContentMap& content) {
  shot.chosenClipPath = ChooseClip(shot, path);
  const std::string key = MakeStdString(PathUtils::GetFilePart(shot.chosenClipPath));
  FieldValueMap values = cache.ValuesOf(MakeStdString(shot.chosenClipPath));
  ApplyP2ClipName(values, key);
  values.insert_or_assign(kPathField,
                          any_regular_t(MakeStdString(EssenceForClipXml(shot.chosenClipPath))));
  if (fields.contains("duration") && shot.totalFrames >= 1) {
    const std::string length =
        XMPSupport::GetTimecodeFromDuration(shot.totalFrames, shot.frameRateText);
    if (!length.empty()) values.insert_or_assign("duration", any_regular_t(length));
  }
  if (fields.contains(kExtraPathField)) {
    values.insert_or_assign(kExtraPathField, PathList(CollectShotExtraPaths(shot)));
  }
  content.insert_or_assign(key, std::move(values));
}

// A clip id is the title of a file, and so no way out of the card.
bool IsClipId(const UTF16String& id) {
  return !id.empty() && id.find(PathUtils::kSeparator) == id.npos && id.find(u'\0') == id.npos;
}

// Where the XML of a clip is or should be on this card. Listings take the extension in any case,
// and what they list must be found again.
UTF16String ClipXmlPath(const UTF16String& path, const UTF16String& id) {
  UTF16String xml =
      CombinePaths(CombinePaths(CombinePaths(path, kContents), kClip), id + kXmlExtension);
  if (IsPresent(xml, Lookup::kDisk)) return xml;
  const auto listed = ListClipXmlFiles(path);
  const auto found = std::ranges::find(listed, id, PathUtils::GetFilePart);
  return found == listed.end() ? xml : *found;
}

// The XML and the essence of a clip, on this card or beside it. False without essence.
bool FindClipFiles(const UTF16String& path, const UTF16String& id, UTF16String& xml,
                   UTF16String& essence) {
  xml = ClipXmlPath(path, id);
  if (!IsPresent(xml, Lookup::kDisk)) {
    xml.clear();
    P2FileFinder finder(xml, kClip, id + kXmlExtension);
    VisitSiblingDirectories(path, finder);
  }
  if (xml.empty()) return false;
  essence = FindClipEssence(ContentsOfClipXml(xml), id, Lookup::kDisk);
  return !essence.empty();
}

void AddExtraPathsOfClip(const UTF16String& path, const UTF16String& id, ClipValueCache& cache,
                         FieldValueMap& values) {
  const UTF16String xml = ClipXmlPath(path, id);
  P2ShotMap shots = ShotsOfCard(path, cache);
  const auto found = std::ranges::find_if(shots, [&xml](const auto& entry) {
    const P2ShotInfo& shot = entry.second;
    return shot.primaryClipPath == xml ||
           std::ranges::find(shot.otherClipPaths, xml) != shot.otherClipPaths.end();
  });
  if (found == shots.end()) return;
  found->second.chosenClipPath = xml;
  values.insert_or_assign(kExtraPathField, PathList(CollectShotExtraPaths(found->second)));
}

}  // namespace

ProviderP2::ProviderP2()
    : ClipProvider({.identification = "com.halvane.Merisk.ProviderP2",
                    .uiString = "$$$/Ortlane/Libraries/Sorvik/PanasonicP2UIString=Panasonic P2",
                    .defaultFields = {"Name", "CreateDate", "ModifyDate", "startTimecode",
                                      "videoFrameRate", "duration", "good"},
                    .labelFields = {"Name",
                                    "identifier",
                                    "relation",
                                    "startTimecode",
                                    "duration",
                                    "CreateDate",
                                    "ModifyDate",
                                    "Rating",
                                    "videoFrameRate",
                                    "videoFrameSize",
                                    "videoCompressor",
                                    "videoPixelAspectRatio",
                                    "audioSampleRate",
                                    "audioSampleType",
                                    "creator",
                                    "shotName",
                                    "shotLocation",
                                    "Path",
                                    "good",
                                    "Make",
                                    "Model",
                                    "SerialNumber",
                                    "GPSAltitude",
                                    "GPSAltitudeRef",
                                    "GPSLatitude",
                                    "GPSLongitude",
                                    "artist",
                                    "scene",
                                    "takeNumber"},
                    .maxThumbnailHeight = std::numeric_limits<int>::max()}) {}

ContentMap ProviderP2::GetContent(const std::string& path, const std::string& key,
                                  const FieldNameSet& fields) const {
  const foundation::CallScope scope;
  const UTF16String root = MakeString(path);
  const UTF16String id = MakeString(key);
  UTF16String xml;
  UTF16String essence;
  if (!IsClipId(id) || !FindClipFiles(root, id, xml, essence)) return {};
  ClipValueCache cache(fields);
  FieldValueMap values = cache.ValuesOf(MakeStdString(xml));
  ApplyP2ClipName(values, key);
  values.insert_or_assign(kPathField, any_regular_t(MakeStdString(essence)));
  if (fields.contains(kExtraPathField)) AddExtraPathsOfClip(root, id, cache, values);
  ContentMap content;
  content.emplace(key, std::move(values));
  return content;
}

ContentMap ProviderP2::GetContent(const std::string& path, const FieldNameSet& fields,
                                  ProviderRequest*) const {
  const foundation::CallScope scope;
  const UTF16String root = MakeString(path);
  ClipValueCache cache(fields);
  P2ShotMap shots = ShotsOfCard(root, cache);
  ContentMap content;
  for (auto& [id, shot] : shots) AddShot(shot, root, fields, cache, content);
  return content;
}

int ProviderP2::CanProvideFor(const std::string& path) const {
  const foundation::CallScope scope;
  const UTF16String root = MakeString(path);
  // The one folder that no card is without, asked for before anything is listed.
  if (!PathUtils::IsValidPath(root) || !PathUtils::IsDirectory(CombinePaths(root, kContents))) {
    return 0;
  }
  const auto impure = IsP2CardRoot(root);
  if (!impure) return 0;
  return *impure ? kScoreWithReservation : kScoreCard;
}

Bitplate** ProviderP2::GetThumbnail(const std::string& path, const std::string& key, int width,
                                    int height, ProviderRequest*) const {
  const UTF16String root = MakeString(path);
  const UTF16String id = MakeString(key);
  if (!PathUtils::IsValidPath(root) || !IsClipId(id)) return nullptr;
  const UTF16String file = id + kBmpExtension;
  UTF16String icon = CombinePaths(CombinePaths(CombinePaths(root, kContents), kIcon), file);
  if (!IsPresent(icon, Lookup::kDisk)) {
    P2FileFinder finder(icon, kIcon, file);
    VisitSiblingDirectories(root, finder);
  }
  return RenderThumbnailIntoNew(icon, width, GetMaximumThumbnailHeight(height));
}

}  // namespace Sorvik
