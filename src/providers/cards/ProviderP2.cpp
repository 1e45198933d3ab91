// SPDX-License-Identifier: MIT
#include "providers/cards/ProviderP2.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "frame/FieldValues.h"
#include "frame/Recognition.h"
#include "providers/cards/P2Shots.h"
#include "providers/cards/P2Siblings.h"
#include "providers/common/ClipReadAhead.h"
#include "providers/common/LooseClips.h"
#include "providers/common/NameMask.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {

using namespace p2;

namespace {

using foundation::CardFolder;
using foundation::ExistsOnCard;
using foundation::FileStem;
using foundation::JoinPath;
using foundation::Lookup;

constexpr LayoutName kContentsLayout[] = {
    {kAudio, true}, {kClip, true}, {kIcon, true}, {kProxy, true}, {kVideo, true}};

Recognition RecognizeContents(const std::string& path) {
  const auto contents = CardFolder::Of(path);
  const std::vector<std::string> folders = contents->Folders();
  if (folders.size() < std::size(kContentsLayout)) return Recognition::kNone;
  LayoutMatch layout(kContentsLayout);
  bool clean = true;
  // Items listed after the last of the five are ignored.
  for (auto name = folders.begin(); name != folders.end() && !layout.IsComplete(); ++name) {
    if (!layout.Add(*name)) clean = false;
  }
  if (!layout.IsComplete()) return Recognition::kNone;
  return Recognized(clean && contents->VisibleFiles().empty());
}

Recognition RecognizeCard(const std::string& path) {
  const auto root = CardFolder::Of(path);
  bool clean = true;
  bool hasContents = false;
  bool hasDesktop = false;
  const std::vector<std::string> folders = root->Folders();
  // Items listed after the two are ignored.
  for (auto name = folders.begin(); name != folders.end() && !(hasContents && hasDesktop); ++name) {
    if (*name == kContents) {
      hasContents = true;
    } else if (*name == "Desktop") {
      hasDesktop = true;
    } else if (!foundation::IsHidden(*name)) {
      clean = false;
    }
  }
  if (!hasContents) return Recognition::kNone;
  const std::vector<std::string> files = root->VisibleFiles();
  if (!files.empty()) {
    // With LASTCLIP.TXT as the only file, unrelated folders don't count.
    clean = files.size() == 1 && files.front() == "LASTCLIP.TXT";
  }
  const Recognition contents = RecognizeContents(root->PathOf(kContents));
  if (contents == Recognition::kNone) return Recognition::kNone;
  return Recognized(clean && contents == Recognition::kClean);
}

// The camera's shot name has priority, unless it repeats the clip's identifier.
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

// On each of its cards, a shot that spans cards is represented by a clip of that card.
std::string ChooseClip(const P2ShotInfo& shot, const std::string& path) {
  const std::string card = JoinPath(foundation::NormalizedPath(path), {});
  std::string primary = foundation::NormalizedPath(shot.primaryClipPath);
  if (primary.starts_with(card)) return primary;
  const auto other = std::ranges::find_if(
      shot.otherClipPaths, [&card](const std::string& clip) { return clip.starts_with(card); });
  return other == shot.otherClipPaths.end() ? primary : *other;
}

void AddShot(P2ShotInfo& shot, const std::string& path, const FieldNameSet& fields,
             ClipValueCache& cache, ContentMap& content) {
  shot.chosenClipPath = ChooseClip(shot, path);
  const std::string key(FileStem(shot.chosenClipPath));
  FieldValueMap values = cache.ValuesOf(shot.chosenClipPath);
  ApplyP2ClipName(values, key);
  values.insert_or_assign(kPathField, any_regular_t(EssenceForClipXml(shot.chosenClipPath)));
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

// A clip id is part of a file name. A key with a separator could lead off the card.
bool IsClipId(std::string_view id) {
  return !id.empty() && id.find_first_of(std::string_view("/\0", 2)) == id.npos;
}

// The path of a clip's XML on this card, whether it exists or not. A listing accepts the extension
// in any case, and the clips that it lists must be found again.
std::string ClipXmlPath(const std::string& path, const std::string& id) {
  std::string xml = ContentsFile(JoinPath(path, kContents), kClip, id, ".XML");
  if (ExistsOnCard(xml, Lookup::kDisk)) return xml;
  const auto listed = ListClipXmlFiles(path);
  const auto found = std::ranges::find(listed, id, FileStem);
  return found == listed.end() ? xml : *found;
}

// Finds the XML and the essence of a clip, on this card or next to it. Returns false if the clip
// has no essence.
bool FindClipFiles(const std::string& path, const std::string& id, std::string& xml,
                   std::string& essence) {
  xml = ClipXmlPath(path, id);
  if (!ExistsOnCard(xml, Lookup::kDisk)) {
    xml.clear();
    P2FileFinder finder(xml, kClip, id, ".XML");
    VisitSiblingDirectories(path, finder);
  }
  if (xml.empty()) return false;
  essence = FindClipEssence(ContentsOfClipXml(xml), id, Lookup::kDisk);
  return !essence.empty();
}

void AddExtraPathsOfClip(const std::string& path, const std::string& id, ClipValueCache& cache,
                         FieldValueMap& values) {
  const std::string xml = ClipXmlPath(path, id);
  const auto shots = SharedShotsOfCard(path, cache);
  const P2ShotInfo* const shot = shots->Of(xml);
  if (shot == nullptr) return;
  P2ShotInfo chosen = *shot;
  chosen.chosenClipPath = xml;
  values.insert_or_assign(kExtraPathField, PathList(CollectShotExtraPaths(chosen)));
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
                    .layout = {.rootNames = {kContents}, .ownFolders = {kContents}},
                    .maxThumbnailHeight = std::numeric_limits<int>::max()}) {}

ContentMap ProviderP2::GetContent(const std::string& path, const std::string& key,
                                  const FieldNameSet& fields) const {
  const foundation::CallScope scope;
  std::string xml;
  std::string essence;
  if (!IsClipId(key) || !FindClipFiles(path, key, xml, essence)) return {};
  ClipValueCache cache(WithShotFields(fields));
  FieldValueMap values = cache.ValuesOf(xml);
  ApplyP2ClipName(values, key);
  values.insert_or_assign(kPathField, any_regular_t(essence));
  if (fields.contains(kExtraPathField)) AddExtraPathsOfClip(path, key, cache, values);
  ContentMap content;
  content.emplace(key, std::move(values));
  return content;
}

ContentMap ProviderP2::GetContent(const std::string& path, const FieldNameSet& fields,
                                  ProviderRequest* request) const {
  const foundation::CallScope scope;
  ClipValueCache cache(WithShotFields(fields));
  P2ShotMap shots = ShotsOfCard(path, cache, request);
  ContentMap content;
  for (auto& [id, shot] : shots) {
    if (IsAnsweredWithout(request)) return {};
    AddShot(shot, path, fields, cache, content);
  }
  return content;
}

int ProviderP2::CanProvideFor(const std::string& path) const {
  const foundation::CallScope scope;
  // One access to the disk excludes most other folders before any listing.
  const bool mayBeCard = foundation::IsValidPath(path) &&
                         CardFolder::Of(path)->ContainsFolder(kContents, Lookup::kDisk);
  return ScoreOf(mayBeCard ? RecognizeCard(path) : Recognition::kNone);
}

Bitplate** ProviderP2::GetThumbnail(const std::string& path, const std::string& key, int width,
                                    int height, ProviderRequest*) const {
  if (!foundation::IsValidPath(path) || !IsClipId(key)) return nullptr;
  std::string icon = ContentsFile(JoinPath(path, kContents), kIcon, key, ".BMP");
  if (!ExistsOnCard(icon, Lookup::kDisk)) {
    P2FileFinder finder(icon, kIcon, key, ".BMP");
    VisitSiblingDirectories(path, finder);
  }
  return RenderThumbnailIntoNew(Hestra::MakeString(icon), width, GetMaximumThumbnailHeight(height));
}

namespace {

// "0001AB.MXF", and its sound files "0001AB00.MXF".
std::optional<LooseName> ParseLoose(std::string_view name) {
  constexpr std::string_view kId = "####**";
  const std::string_view stem = FileStem(name);
  const std::string_view rest = stem.substr(std::min(kId.size(), stem.size()));
  const bool isSound = MatchesMask(rest, "##");
  if (!MatchesPattern(stem.substr(0, kId.size()), kId) || !(rest.empty() || isSound)) {
    return std::nullopt;
  }
  const bool isMXF = foundation::HasExtension(name, ".mxf");
  return LooseName{.clip = stem.substr(0, kId.size()),
                   .isOriginal = isMXF && !isSound,
                   .isProxy = foundation::HasExtension(name, ".mp4"),
                   .isTypical = isMXF && isSound};
}

}  // namespace

std::optional<FileGroup> ProviderP2::GroupOf(const std::string& folder,
                                             const std::string& name) const {
  return GroupLooseFiles(folder, name, ParseLoose);
}

}  // namespace Sorvik
