// SPDX-License-Identifier: MIT
// Generated cards with any number of clips, one for each structure.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "support/AvchdCard.h"
#include "support/Cards.h"
#include "support/ModernCards.h"
#include "support/TempTree.h"

namespace sorvik_test {

inline std::string Number(const char* format, long number) {
  char text[64];
  std::snprintf(text, sizeof(text), format, number);
  return text;
}

inline void MakeP2(const TempTree& tree, const std::string& card, long clips) {
  MakeP2Card(tree, card);
  for (long i = 0; i < clips; ++i) {
    AddP2Clip(tree, card, {.id = Number("%04ldAA", i)});
  }
}

inline std::vector<SonyClip> SonyClips(const char* format, long clips) {
  std::vector<SonyClip> all;
  for (long i = 0; i < clips; ++i) all.push_back({Number(format, i)});
  return all;
}

inline void MakeDisc(const TempTree& tree, const std::string& card, long clips) {
  MakeXDCAMDisc(tree, card, SonyClips("C%04ld", clips));
}

inline void MakeProav(const TempTree& tree, const std::string& card, long clips) {
  MakeXDCAMProav(tree, card, SonyClips("C%04ld", clips));
}

inline void MakeEX(const TempTree& tree, const std::string& card, long clips) {
  MakeXDCAMEXCard(tree, card, SonyClips("A%04ld_01", clips));
}

inline void MakeAVCHD(const TempTree& tree, const std::string& folder, long clips) {
  const AvchdCard card(tree, folder);
  for (long i = 0; i < clips; ++i) {
    const std::string number = Number("%05ld", i);
    card.Clips({number});
    card.Playlist(number, {{number}});
  }
}

inline void MakeXF(const TempTree& tree, const std::string& card, long clips) {
  const std::string root = card + "/CONTENTS/CLIPS001/";
  tree.File(root + "INDEX.MIF");
  for (long i = 0; i < clips; ++i) {
    const std::string id = Number("AA%04ld", i);
    for (const char* end : {"01.MXF", "02.MXF", ".CIF"}) {
      tree.File(root + id + "/" + id + end, "essence");
    }
  }
}

inline void MakeHDV(const TempTree& tree, const std::string& card, long clips) {
  for (long i = 0; i < clips; ++i) {
    const std::string title = Number("00_%04ld_2014-01-31_101530", i);
    for (const char* end : {".M2T", ".IDX"}) tree.File(card + "/VIDEO/HVR/" + title + end, "x");
  }
}

inline void MakeRED(const TempTree& tree, const std::string& card, long clips) {
  for (long i = 0; i < clips; ++i) {
    const std::string title = Number("A001_C%04ld", i);
    for (const char* end : {"_001.R3D", "_002.R3D", ".RMD"}) {
      tree.File(card + "/" + title + ".RDC/" + title + end, "x");
    }
  }
}

inline void MakeFolder(const TempTree& tree, const std::string& folder, long clips) {
  for (long i = 0; i < clips; ++i) tree.File(folder + Number("/clip%05ld.mov", i), "x");
}

inline void MakeXAVC(const TempTree& tree, const std::string& card, long clips) {
  std::vector<XAVCClip> all;
  for (long i = 0; i < clips; ++i) all.push_back({.name = Number("C%04ld", i)});
  MakeXAVCCard(tree, card, XAVCLayout::kM4Root, all);
}

inline void MakeCanonFlat(const TempTree& tree, const std::string& card, long clips) {
  for (long i = 0; i < clips; ++i) {
    const std::string stem = Number("A_0001C%03ldA260711_101700EJ_CANON", i);
    MakeCanonFlatCard(tree, card, {stem + ".MP4", stem + ".XML"});
  }
}

struct CardMaker {
  const char* name;
  void (*make)(const TempTree& tree, const std::string& card, long clips);
};

inline constexpr CardMaker kCardMakers[] = {{"directory", MakeFolder},
                                            {"P2", MakeP2},
                                            {"XDCAM-disc", MakeDisc},
                                            {"XDCAM-PROAV", MakeProav},
                                            {"XDCAM-EX", MakeEX},
                                            {"AVCHD", MakeAVCHD},
                                            {"Canon-XF", MakeXF},
                                            {"Sony-HDV", MakeHDV},
                                            {"RED", MakeRED},
                                            {"Sony-XAVC", MakeXAVC},
                                            {"Canon-XF-AVC", MakeCanonFlat}};

}  // namespace sorvik_test
