// SPDX-License-Identifier: MIT
// Made cards of newer cameras. Essence is a few bytes; lists and records are complete.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/TempTree.h"

namespace sorvik_test {

// What a made XAVC clip has; by default all files that a camera writes, listed in the index.
struct XAVCClip {
  std::string name;
  std::string device = "784B87FFFEBA9815";
  std::string codec = "AVC_3840_2160_HP@L51";
  int frames = 100;                // at 25 frames per second
  std::string start = "00000010";  // timecode word: frames, seconds, minutes, hours
  std::string end = "24030010";    // of the last frame
  std::string created = "2024-05-06T10:00:00+02:00";
  std::string title = {};
  bool listed = true;
  bool essence = true;
  bool record = true;
  bool proxy = true;
  bool thumbnail = true;
};

enum class XAVCLayout { kM4Root, kXDRoot };

// The UMID that the index and the record of a made clip have.
std::string UmidOf(const XAVCClip& clip);
// A card at `root`, relative to the tree. With `index` false there is no material list.
void MakeXAVCCard(const TempTree& tree, const std::string& root, XAVCLayout layout,
                  const std::vector<XAVCClip>& clips, bool index = true);

// A Canon card at `root` with these files in CONTENTS/CLIPS001, each of a few bytes.
void MakeCanonFlatCard(const TempTree& tree, const std::string& root,
                       const std::vector<std::string>& files);

}  // namespace sorvik_test
