// SPDX-License-Identifier: MIT
// Generated cards with any number of clips, one for each structure.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "support/AvchdCard.h"
#include "support/Cards.h"
#include "support/MadeMedia.h"
#include "support/ModernCards.h"
#include "support/SoundFile.h"
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

inline void MakeDCIM(const TempTree& tree, const std::string& card, long clips) {
  for (long i = 0; i < clips; ++i) {
    const std::string stem = card + "/DCIM/" + std::to_string(100 + i / 1000) + "CANON/MVI_";
    for (const char* end : {".MP4", ".THM"}) {
      tree.File(stem + Number("%04ld", i) + end, MadeMedia(end));
    }
  }
}

inline void MakePanaGroup(const TempTree& tree, const std::string& card, long clips) {
  for (long i = 0; i < clips; ++i) {
    tree.File(card + Number("/001RAQAM/A001C%03ld_250101AB.MOV", i), MadeMedia(".MOV"));
  }
}

inline void MakeBRAW(const TempTree& tree, const std::string& folder, long clips) {
  for (long i = 0; i < clips; ++i) {
    tree.File(folder + Number("/A001_08151512_C%03ld.braw", i), MadeMedia(".mov"));
  }
}

inline void MakeARRIReel(const TempTree& tree, const std::string& folder, long clips) {
  for (long i = 0; i < clips; ++i) {
    tree.File(folder + Number("/A001C%03ld_160102_R1JL.mov", i), MadeMedia(".mov"));
  }
}

inline void MakeREDMOV(const TempTree& tree, const std::string& folder, long clips) {
  for (long i = 0; i < clips; ++i) {
    const std::string clip = Number("A001_C%03ld_0925AB", i);
    tree.File(folder + "/" + clip + ".RDC/" + clip + "_001.mov", MadeMedia(".mov"));
  }
}

inline void MakeSoundRoll(const TempTree& tree, const std::string& folder, long takes) {
  for (long i = 0; i < takes; ++i) {
    const std::string uid = Number("FAM%04ld", i);
    tree.File(folder + "/" + uid + ".WAV", MadeRecording({.ixml = FamilyXml(uid)}));
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
                                            {"Canon-XF-AVC", MakeCanonFlat},
                                            {"DCIM", MakeDCIM},
                                            {"PANA_GRP", MakePanaGroup},
                                            {"BRAW", MakeBRAW},
                                            {"ARRI-reel", MakeARRIReel},
                                            {"RED-MOV", MakeREDMOV},
                                            {"sound-roll", MakeSoundRoll}};

}  // namespace sorvik_test
