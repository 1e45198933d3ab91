// SPDX-License-Identifier: MIT
// The clips of P2 cards and the shots that they form. A camera splits a long recording into clips,
// and a recording runs on from one card to the next; the clips of a shot carry its id and name one
// another. Everything here lives within one provider operation and belongs to its thread.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/Presence.h"

namespace Sorvik::p2 {

inline constexpr char16_t kContents[] = u"CONTENTS";
inline constexpr char16_t kAudio[] = u"AUDIO";
inline constexpr char16_t kClip[] = u"CLIP";
inline constexpr char16_t kIcon[] = u"ICON";
inline constexpr char16_t kProxy[] = u"PROXY";
inline constexpr char16_t kVideo[] = u"VIDEO";
inline constexpr char16_t kVoice[] = u"VOICE";
inline constexpr char16_t kAVClip[] = u"AVCLIP";
inline constexpr char16_t kXmlExtension[] = u".XML";
inline constexpr char16_t kMxfExtension[] = u".MXF";
inline constexpr char16_t kBmpExtension[] = u".BMP";

// Through this all work of an operation reads metadata: each clip XML is read once.
class ClipValueCache {
 public:
  // `fields` are the caller's; what shots hang on is read with them.
  explicit ClipValueCache(const FieldNameSet& fields);
  const FieldValueMap& ValuesOf(const std::string& xmlPath);

 private:
  XMPSupport::XMPFieldBits fields_;
  std::unordered_map<std::string, FieldValueMap> values_;
};

struct P2ShotInfo {
  explicit P2ShotInfo(const UTF16String& xmlPath);

  std::vector<UTF16String> otherClipPaths;  // in the order of discovery
  UTF16String primaryClipPath;              // the clip XML that stands for the shot so far
  UTF16String chosenClipPath;               // the one shown in the current listing
  std::uint64_t primaryModTime = 0;
  bool primaryIsTop = false;
  std::int64_t totalFrames = 0;
  std::string frameRateText;            // of the first clip that gave a count of frames
  std::set<UTF16String> contentsRoots;  // the CONTENTS folders with clips of the shot
  std::set<std::string> seenClipIds;
  std::set<std::string> referencedClipIds;

  bool IsComplete() const { return seenClipIds == referencedClipIds; }
};

// By shot id. Clips without one stand each for itself under the empty id.
using P2ShotMap = std::multimap<std::string, P2ShotInfo>;
using ShotIdSet = std::set<std::string>;

// The clip XML files of the card at `root`, hidden ones left out.
std::vector<UTF16String> ListClipXmlFiles(const UTF16String& root);

// The essence of clip `id` below a CONTENTS folder: video, else the first sound channel, else the
// file of a long-GOP clip; empty if there is none.
UTF16String FindClipEssence(const UTF16String& contents, std::u16string_view id,
                            foundation::Lookup lookup);
// The CONTENTS folder around a clip XML: the one that holds its CLIP folder.
UTF16String ContentsOfClipXml(std::u16string_view xmlPath);
// The same essence for a clip XML, in a listing.
UTF16String EssenceForClipXml(std::u16string_view xmlPath);

// The shot id in the text of a "relation" field; empty if it has none.
std::string ParseShotId(std::string_view relation);

// Puts a clip that has essence into its shot. With a `filter`, clips of other shots, clips without
// a shot and clips that the shot has already are left out.
void AddClipToShots(const UTF16String& xmlPath, const ShotIdSet& filter, ClipValueCache& cache,
                    P2ShotMap& shots);

// Adds the ids of shots that lack a part to `incomplete`, and tells whether that holds any.
bool CollectIncompleteShots(const P2ShotMap& shots, ShotIdSet& incomplete);

// The files of a shot besides the essence of its chosen clip, then the P2 folders of its cards.
std::vector<UTF16String> CollectShotExtraPaths(const P2ShotInfo& shot);

}  // namespace Sorvik::p2
