// SPDX-License-Identifier: MIT
#include "providers/cards/P2Shots.h"

#include <optional>
#include <utility>

#include "foundation/hestra/Directory.h"
#include "foundation/hestra/File.h"
#include "foundation/hestra/PathUtils.h"
#include "frame/FieldValues.h"

namespace Sorvik::p2 {
namespace {

namespace PathUtils = Hestra::PathUtils;
using foundation::IsPresent;
using foundation::Lookup;
using Hestra::MakeStdString;
using PathUtils::CombinePaths;

constexpr std::string_view kGlobalShotId = "globalShotID";
constexpr std::string_view kTopClipId = "topGlobalClipID";
constexpr std::string_view kPreviousClipId = "previousGlobalClipID";
constexpr std::string_view kNextClipId = "nextGlobalClipID";

struct ClipFacts {
  std::string relation;
  std::string identifier;
  std::string frameCount;
  std::uint64_t modTime = 0;
};

// The next token of `text`, which loses it; empty at the end.
std::string_view TakeToken(std::string_view& text) {
  static constexpr std::string_view kDividers = ":; ";
  text.remove_prefix(std::min(text.find_first_not_of(kDividers), text.size()));
  const std::string_view token = text.substr(0, text.find_first_of(kDividers));
  text.remove_prefix(token.size());
  return token;
}

// Notes the clips that this one names, and tells whether it names itself as the shot's first.
bool ScanClipLinks(P2ShotInfo& shot, std::string_view relation, std::string_view identifier) {
  bool isTop = false;
  while (true) {
    const std::string_view key = TakeToken(relation);
    const std::string_view value = TakeToken(relation);
    if (value.empty()) return isTop;
    if (key != kTopClipId && key != kPreviousClipId && key != kNextClipId) continue;
    shot.referencedClipIds.emplace(value);
    if (key == kTopClipId && value == identifier) isTop = true;
  }
}

void AddClipToShot(P2ShotInfo& shot, const ClipFacts& clip, const UTF16String& xmlPath) {
  std::int64_t frames = 0;
  std::string rate;
  if (XMPSupport::ParseFrameCount(clip.frameCount, frames, rate)) {
    if (shot.frameRateText.empty()) shot.frameRateText = rate;
    // Counts come from files; their sum wraps instead of being undefined.
    shot.totalFrames = static_cast<std::int64_t>(static_cast<std::uint64_t>(shot.totalFrames) +
                                                 static_cast<std::uint64_t>(frames));
  }
  shot.seenClipIds.insert(clip.identifier);
  const bool isTop = ScanClipLinks(shot, clip.relation, clip.identifier);
  shot.contentsRoots.insert(ContentsOfClipXml(xmlPath));
  // Until the first clip is seen the newest stands for the shot; the first keeps its place.
  if (shot.primaryIsTop || (!isTop && clip.modTime <= shot.primaryModTime)) {
    shot.otherClipPaths.push_back(xmlPath);
    return;
  }
  if (xmlPath != shot.primaryClipPath) {
    if (!shot.primaryClipPath.empty()) shot.otherClipPaths.push_back(shot.primaryClipPath);
    shot.primaryClipPath = xmlPath;
  }
  shot.primaryModTime = clip.modTime;
  shot.primaryIsTop = isTop;
}

}  // namespace

ClipValueCache::ClipValueCache(const FieldNameSet& fields) {
  FieldNameSet all = fields;
  all.insert({"identifier", "relation", "shotName", "frameCount"});
  fields_ = XMPSupport::ParseFields(all);
}

const FieldValueMap& ClipValueCache::ValuesOf(const std::string& xmlPath) {
  const auto known = values_.find(xmlPath);
  if (known != values_.end()) return known->second;
  return values_.emplace(xmlPath, XMPSupport::MakeValue(xmlPath, fields_)).first->second;
}

P2ShotInfo::P2ShotInfo(const UTF16String& xmlPath)
    : primaryClipPath(xmlPath), contentsRoots{ContentsOfClipXml(xmlPath)} {}

std::vector<UTF16String> ListClipXmlFiles(const UTF16String& root) {
  const UTF16String folder = CombinePaths(CombinePaths(root, kContents), kClip);
  if (!PathUtils::IsDirectory(folder)) return {};
  auto files = Hestra::Directory::GetContainedFilePaths(folder, kXmlExtension);
  PathUtils::FilterHiddenFiles(files);
  return files;
}

UTF16String FindClipEssence(const UTF16String& contents, std::u16string_view id, Lookup lookup) {
  const UTF16String name(id);
  for (const auto& [folder, file] :
       {std::pair(kVideo, name + kMxfExtension), std::pair(kAudio, name + u"00" + kMxfExtension),
        std::pair(kAVClip, name + kMxfExtension)}) {
    UTF16String path = CombinePaths(CombinePaths(contents, folder), file);
    if (IsPresent(path, lookup)) return path;
  }
  return {};
}

UTF16String ContentsOfClipXml(std::u16string_view xmlPath) {
  const UTF16String clipFolder =
      PathUtils::RemoveTrailingSlash(PathUtils::GetFullDirectoryPart(xmlPath));
  return PathUtils::RemoveTrailingSlash(PathUtils::GetFullDirectoryPart(clipFolder));
}

UTF16String EssenceForClipXml(std::u16string_view xmlPath) {
  return FindClipEssence(ContentsOfClipXml(xmlPath), PathUtils::GetFilePart(xmlPath),
                         Lookup::kListing);
}

std::string ParseShotId(std::string_view relation) {
  const std::string key = std::string(kGlobalShotId) + ":";
  const auto at = relation.find(key);
  if (at == relation.npos) return {};
  const std::string_view rest = relation.substr(at + key.size());
  return std::string(rest.substr(0, rest.find(';')));
}

void AddClipToShots(const UTF16String& xmlPath, const ShotIdSet& filter, ClipValueCache& cache,
                    P2ShotMap& shots) {
  if (PathUtils::GetFilePart(xmlPath).starts_with(u'.')) return;
  if (EssenceForClipXml(xmlPath).empty()) return;
  const FieldValueMap& values = cache.ValuesOf(MakeStdString(xmlPath));
  ClipFacts clip;
  clip.relation = TextOf(values, "relation");
  const std::string shotId = ParseShotId(clip.relation);
  if (shotId.empty()) {
    if (filter.empty()) shots.emplace(std::string(), P2ShotInfo(xmlPath));
    return;
  }
  if (!filter.empty() && !filter.contains(shotId)) return;
  clip.identifier = TextOf(values, "identifier");
  clip.frameCount = TextOf(values, "frameCount");
  if (Hestra::File::GetLastModificationTime(xmlPath, clip.modTime) < 0) return;

  auto shot = shots.lower_bound(shotId);
  if (shot == shots.end() || shot->first != shotId) {
    shot = shots.emplace(shotId, P2ShotInfo(xmlPath));
  } else if (!filter.empty() && shot->second.seenClipIds.contains(clip.identifier)) {
    return;  // a copy of a card that is there already is no further part
  }
  AddClipToShot(shot->second, clip, xmlPath);
}

bool CollectIncompleteShots(const P2ShotMap& shots, ShotIdSet& incomplete) {
  for (const auto& [id, shot] : shots) {
    if (!shot.IsComplete()) incomplete.insert(id);
  }
  return !incomplete.empty();
}

}  // namespace Sorvik::p2
