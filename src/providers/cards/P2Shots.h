// SPDX-License-Identifier: MIT
// The clips of P2 cards and the shots that they form. A camera splits a long recording into clips,
// and a recording may continue on another card; the clips of a shot have the same shot id and
// reference one another. Paths and names are UTF-8. Objects live within one provider operation, on
// its thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/frame/ProviderRequest.h"
#include "foundation/CardFolder.h"
#include "foundation/platform/NameOrder.h"
#include "providers/common/ClipValueCache.h"

namespace Sorvik::p2 {

inline constexpr std::string_view kContents = "CONTENTS";
inline constexpr std::string_view kAudio = "AUDIO";
inline constexpr std::string_view kClip = "CLIP";
inline constexpr std::string_view kIcon = "ICON";
inline constexpr std::string_view kProxy = "PROXY";
inline constexpr std::string_view kVideo = "VIDEO";
inline constexpr std::string_view kVoice = "VOICE";
inline constexpr std::string_view kAVClip = "AVCLIP";

// Records of clips are some 10 kB; larger ones count as unreadable.
inline constexpr std::size_t kMaxClipXmlBytes = std::size_t{4} << 20;
inline constexpr std::size_t kMaxChannels = 16;

// The path of the file `name` + `extension` in a folder of CONTENTS.
std::string ContentsFile(std::string_view contents, std::string_view folder, std::string_view name,
                         std::string_view extension);

// `fields` and those that form shots, for the cache of an operation.
FieldNameSet WithShotFields(FieldNameSet fields);

struct PathLess {
  bool operator()(const std::string& a, const std::string& b) const {
    return platform::LessByCodeUnits(a, b);
  }
};

struct P2ShotInfo {
  explicit P2ShotInfo(const std::string& xmlPath);

  std::vector<std::string> otherClipPaths;  // in the order of discovery
  std::string primaryClipPath;              // the clip XML that represents the shot
  std::string chosenClipPath;               // the clip XML shown in the current listing
  std::uint64_t primaryModTime = 0;
  bool primaryIsTop = false;
  std::int64_t totalFrames = 0;
  std::string frameRateText;                      // of the first clip with a frame count
  std::set<std::string, PathLess> contentsRoots;  // the CONTENTS folders with clips of the shot
  std::set<std::string> seenClipIds;
  std::set<std::string> referencedClipIds;

  bool IsComplete() const { return seenClipIds == referencedClipIds; }
};

// By shot id. Each clip without a shot id is a shot of its own, under the empty id.
using P2ShotMap = std::multimap<std::string, P2ShotInfo>;
using ShotIdSet = std::set<std::string>;

// The clip XML files of the card at `root`, without hidden ones.
std::vector<std::string> ListClipXmlFiles(const std::string& root);

// The essence of clip `id` in a CONTENTS folder: video, else the first sound channel, else the file
// of a long-GOP clip; empty if there is none.
std::string FindClipEssence(std::string_view contents, std::string_view id,
                            foundation::Lookup lookup);
// The CONTENTS folder of a clip XML: the parent of its CLIP folder.
std::string ContentsOfClipXml(std::string_view xmlPath);
// The essence of a clip XML, looked up in the listings.
std::string EssenceForClipXml(std::string_view xmlPath);

// The text of a "relation" field.
inline constexpr std::string_view kGlobalShotId = "globalShotID";
inline constexpr std::string_view kTopClipId = "topGlobalClipID";
inline constexpr std::string_view kPreviousClipId = "previousGlobalClipID";
inline constexpr std::string_view kNextClipId = "nextGlobalClipID";

// The id with that name in the text of a "relation" field; empty if it has none.
std::string ParseRelation(std::string_view relation, std::string_view name);

// Announces the clips that are going to be added to shots, in this order.
void ReadClipsAhead(const std::vector<std::string>& xmlPaths, ClipValueCache& cache,
                    ProviderRequest* request);

// Adds a clip that has essence to its shot. With a `filter`, skips clips of other shots, clips
// without a shot id and clips that the shot already has.
void AddClipToShots(const std::string& xmlPath, const ShotIdSet& filter, ClipValueCache& cache,
                    P2ShotMap& shots);

// Adds the ids of incomplete shots to `incomplete`. Returns true if that isn't empty.
bool CollectIncompleteShots(const P2ShotMap& shots, ShotIdSet& incomplete);

// The files of a shot except the essence of its chosen clip, then the P2 folders of its cards.
std::vector<std::string> CollectShotExtraPaths(const P2ShotInfo& shot);

}  // namespace Sorvik::p2
