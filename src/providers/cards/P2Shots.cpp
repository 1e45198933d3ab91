// SPDX-License-Identifier: MIT
#include "providers/cards/P2Shots.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "foundation/hestra/File.h"
#include "frame/FieldValues.h"
#include "providers/common/ClipReadAhead.h"

namespace Sorvik::p2 {
namespace {

using foundation::JoinPath;
using foundation::Lookup;
using foundation::ParentFolder;

constexpr char kRelationField[] = "relation";

struct ClipFacts {
  std::string relation;
  std::string identifier;
  std::string frameCount;
  std::uint64_t modTime = 0;
};

// Removes the next token from the front of `text` and returns it; empty at the end.
std::string_view TakeToken(std::string_view& text) {
  static constexpr std::string_view kSeparators = ":; ";
  text.remove_prefix(std::min(text.find_first_not_of(kSeparators), text.size()));
  const std::string_view token = text.substr(0, text.find_first_of(kSeparators));
  text.remove_prefix(token.size());
  return token;
}

// Adds the clips that this clip references. Returns true if it references itself as the first clip
// of the shot.
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

void AddFrames(P2ShotInfo& shot, const std::string& frameCount) {
  std::int64_t frames = 0;
  std::string rate;
  if (!XMPSupport::ParseFrameCount(frameCount, frames, rate)) return;
  if (shot.frameRateText.empty()) shot.frameRateText = rate;
  // Counts come from files; their sum wraps instead of being undefined.
  shot.totalFrames = static_cast<std::int64_t>(static_cast<std::uint64_t>(shot.totalFrames) +
                                               static_cast<std::uint64_t>(frames));
}

void AddClipToShot(P2ShotInfo& shot, const ClipFacts& clip, const std::string& xmlPath) {
  AddFrames(shot, clip.frameCount);
  shot.seenClipIds.insert(clip.identifier);
  const bool isTop = ScanClipLinks(shot, clip.relation, clip.identifier);
  shot.contentsRoots.insert(ContentsOfClipXml(xmlPath));
  // The newest clip is the primary one until the top clip is found, which then stays primary. Of
  // clips of the same age the one found first is primary.
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

struct ModificationRecord {
  std::optional<std::uint64_t> time;
};

// Nanoseconds since 1970; nullopt if it can't be read. Read once in a call scope.
std::optional<std::uint64_t> ModificationTimeOf(const std::string& xmlPath) {
  return foundation::CallScope::Remember<ModificationRecord>(
             xmlPath,
             [&xmlPath] {
               std::uint64_t time = 0;
               const UTF16String path = Hestra::MakeString(xmlPath);
               if (Hestra::File::GetLastModificationTime(path, time) < 0) {
                 return ModificationRecord{};
               }
               return ModificationRecord{time};
             })
      ->time;
}

bool IsClipWithEssence(const std::string& xmlPath) {
  return !foundation::IsHidden(xmlPath) && !EssenceForClipXml(xmlPath).empty();
}

}  // namespace

std::string ContentsFile(std::string_view contents, std::string_view folder, std::string_view name,
                         std::string_view extension) {
  return JoinPath(JoinPath(contents, folder), std::string(name).append(extension));
}

FieldNameSet WithShotFields(FieldNameSet fields) {
  fields.insert({"identifier", "relation", "shotName", "frameCount"});
  return fields;
}

P2ShotInfo::P2ShotInfo(const std::string& xmlPath)
    : primaryClipPath(xmlPath), contentsRoots{ContentsOfClipXml(xmlPath)} {}

std::vector<std::string> ListClipXmlFiles(const std::string& root) {
  const auto folder = foundation::CardFolder::Of(JoinPath(JoinPath(root, kContents), kClip));
  std::vector<std::string> files = folder->VisibleFiles(".XML");
  for (std::string& file : files) file = folder->PathOf(file);
  return files;
}

std::string FindClipEssence(std::string_view contents, std::string_view id, Lookup lookup) {
  for (const auto& [folder, extension] :
       {std::pair(kVideo, ".MXF"), std::pair(kAudio, "00.MXF"), std::pair(kAVClip, ".MXF")}) {
    std::string path = ContentsFile(contents, folder, id, extension);
    if (foundation::ExistsOnCard(path, lookup)) return path;
  }
  return {};
}

std::string ContentsOfClipXml(std::string_view xmlPath) {
  return std::string(ParentFolder(ParentFolder(xmlPath)));
}

std::string EssenceForClipXml(std::string_view xmlPath) {
  return FindClipEssence(ContentsOfClipXml(xmlPath), foundation::FileStem(xmlPath),
                         Lookup::kListing);
}

std::string ParseRelation(std::string_view relation, std::string_view name) {
  const std::string key = std::string(name) + ":";
  const auto at = relation.find(key);
  if (at == relation.npos) return {};
  const std::string_view rest = relation.substr(at + key.size());
  return std::string(rest.substr(0, rest.find(';')));
}

void AddClipToShots(const std::string& xmlPath, const ShotIdSet& filter, ClipValueCache& cache,
                    P2ShotMap& shots) {
  if (!IsClipWithEssence(xmlPath)) return;
  const FieldValueMap& values = cache.ValuesOf(xmlPath);
  ClipFacts clip;
  clip.relation = TextOf(values, kRelationField);
  const std::string shotId = ParseRelation(clip.relation, kGlobalShotId);
  if (shotId.empty()) {
    if (filter.empty()) shots.emplace(std::string(), P2ShotInfo(xmlPath));
    return;
  }
  if (!filter.empty() && !filter.contains(shotId)) return;
  clip.identifier = TextOf(values, "identifier");
  clip.frameCount = TextOf(values, "frameCount");
  const auto modTime = ModificationTimeOf(xmlPath);
  if (!modTime) return;
  clip.modTime = *modTime;

  auto shot = shots.lower_bound(shotId);
  if (shot == shots.end() || shot->first != shotId) {
    shot = shots.emplace(shotId, P2ShotInfo(xmlPath));
  } else if (!filter.empty() && shot->second.seenClipIds.contains(clip.identifier)) {
    return;  // a copy of a card isn't a further part of the shot
  }
  AddClipToShot(shot->second, clip, xmlPath);
}

void ReadClipsAhead(const std::vector<std::string>& xmlPaths, ClipValueCache& cache,
                    ProviderRequest* request) {
  std::vector<std::string> clips;
  std::ranges::copy_if(xmlPaths, std::back_inserter(clips), IsClipWithEssence);
  cache.ReadAhead(std::move(clips), StopOnceAnswered(request),
                  [](const std::string& path, const FieldValueMap& values) {
                    const std::string relation = TextOf(values, kRelationField);
                    if (!ParseRelation(relation, kGlobalShotId).empty()) ModificationTimeOf(path);
                  });
}

bool CollectIncompleteShots(const P2ShotMap& shots, ShotIdSet& incomplete) {
  for (const auto& [id, shot] : shots) {
    if (!shot.IsComplete()) incomplete.insert(id);
  }
  return !incomplete.empty();
}

}  // namespace Sorvik::p2
