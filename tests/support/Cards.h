// SPDX-License-Identifier: MIT
// Synthetic cards with clips described by XML: P2, XDCAM and XDCAM EX. XML files are like those of
// cameras; essence files have a few bytes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/TempTree.h"

namespace sorvik_test {

// --- P2 ---

struct P2Clip {
  std::string id = {};        // six characters
  std::string globalId = {};  // GlobalClipID; `id` with a prefix if empty
  std::string shotId = {};    // empty for a clip that is no part of a shot
  std::string top = {};       // global ids, empty for none
  std::string previous = {};
  std::string next = {};
  std::string userName = {};  // UserClipName
  int frames = 100;
  std::string editUnit = "1/25";
  std::string start = "10:20:30:12";  // timecode
  std::string essence = "VIDEO";      // "VIDEO", "AUDIO", "AVCLIP" or empty for none
  std::string extraXml = {};          // inside ClipMetadata
};

// The default global id of a clip.
std::string P2GlobalId(std::string_view id);
std::string P2ClipXml(const P2Clip& clip);

// Creates an empty card at `card` (relative to the tree): the five required folders.
void MakeP2Card(const TempTree& tree, const std::string& card);
// Adds a clip: its XML, essence and icon.
void AddP2Clip(const TempTree& tree, const std::string& card, const P2Clip& clip);
// The clips `ids`, linked as one shot in playing order.
std::vector<P2Clip> P2Shot(const std::vector<std::string>& ids, const std::string& shotId);

// --- Sony ---

struct SonyClip {
  std::string name;
  std::string umid = {};  // UmidOf(name) if empty
  std::string title = {};
  int frames = 100;
  std::string rate = "25p";
};

// A UMID of 64 hexadecimal digits, derived from the name.
std::string UmidOf(std::string_view name);
std::string NonRealTimeMetaXml(const SonyClip& clip);
// An XML element with attributes given as `a="1" b="2"`.
std::string XmlElement(std::string_view name, std::string_view attributes,
                       std::string_view content = {});
// A MEDIAPRO.XML with these Material elements.
std::string MediaProXml(std::string_view materials);

// A clean disc with the score 100. Each clip has a proxy in Sub.
void MakeXDCAMDisc(const TempTree& tree, const std::string& card,
                   const std::vector<SonyClip>& clips);
// The same in the PROAV layout. Each clip has video, sound and metadata files.
void MakeXDCAMProav(const TempTree& tree, const std::string& card,
                    const std::vector<SonyClip>& clips);

struct EXTake {
  std::string name;
  std::vector<std::string> clips;         // names of the components in the material list
  std::vector<std::string> sources = {};  // names in the playlist; `clips` if empty
  bool complete = true;
  bool playlist = true;
};

// A card with takes and the score 100. Clip folders have all files that cameras write.
void MakeXDCAMEXCard(const TempTree& tree, const std::string& card,
                     const std::vector<SonyClip>& clips, const std::vector<EXTake>& takes = {});

}  // namespace sorvik_test
