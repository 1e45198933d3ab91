// SPDX-License-Identifier: MIT
// Made cards whose clips are described by XML: P2, XDCAM and XDCAM EX. Builders write small files
// in the form of the cameras'; essence is a few bytes.
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
  std::string essence = "VIDEO";  // "VIDEO", "AUDIO", "AVCLIP" or empty for none
  std::string extraXml = {};      // within ClipMetadata
};

// The global id that a clip has by default.
std::string P2GlobalId(std::string_view id);
std::string P2ClipXml(const P2Clip& clip);

// An empty card at `card` (relative to the tree): the five folders that a card can't be without.
void MakeP2Card(const TempTree& tree, const std::string& card);
// Adds a clip: its XML, essence and icon.
void AddP2Clip(const TempTree& tree, const std::string& card, const P2Clip& clip);
// The clips `ids` linked to one shot, in playing order.
std::vector<P2Clip> P2Shot(const std::vector<std::string>& ids, const std::string& shotId);

}  // namespace sorvik_test
