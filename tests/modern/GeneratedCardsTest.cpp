// SPDX-License-Identifier: MIT
// Compares listings with random cards whose contents the generator records.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>
#include <set>

#include "providers/modern/ProviderCanonXFAVC.h"
#include "providers/modern/ProviderSonyXAVC.h"
#include "support/ModernCards.h"
#include "support/TempTree.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;

namespace fs = std::filesystem;

constexpr unsigned kSeeds = 40;
const FieldNameSet kPaths{kPathField, kExtraPathField};

// Entry key to the paths of its files, relative to the root.
using Expected = std::map<std::string, std::set<std::string>>;

Expected FilesOf(const ContentMap& content, const std::string& root,
                 const std::set<std::string>& shared) {
  Expected files;
  for (const auto& [key, fields] : content) {
    std::set<std::string>& paths = files[key];
    for (const std::string& path : ExtraPathsOf(fields, root)) {
      if (shared.contains(path)) continue;
      EXPECT_TRUE(paths.insert(path).second) << path << " twice";
    }
    if (fields.contains(kPathField)) {
      paths.insert(TextOf(fields, kPathField).substr(root.size() + 1));
    }
  }
  return files;
}

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  unsigned Below(unsigned limit) { return static_cast<unsigned>(engine_() % limit); }
  bool Chance(unsigned percent) { return Below(100) < percent; }

 private:
  std::mt19937 engine_;
};

// Names of several cameras with gaps, some of which are the beginning of others.
std::string RandomClipName(Random& random) {
  const std::string number = std::to_string(random.Below(30));
  switch (random.Below(4)) {
    case 0:
      return "C00" + number;
    case 1:
      return "C585" + number;
    case 2:
      return "A001C0" + number + "_250925AB";
    default:
      return "628_12 " + number;
  }
}

TEST(GeneratedCards, XAVCListsEveryFileOfEachClipOnce) {
  for (unsigned seed = 0; seed < kSeeds; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const bool m4 = random.Chance(50);
    std::map<std::string, XAVCClip> clips;
    const bool withIndex = random.Chance(80);
    for (unsigned i = random.Below(20); i < 20; ++i) {
      XAVCClip clip{.name = RandomClipName(random)};
      if (random.Chance(40)) clip.device = "A0CDF3FFFE79BDEE";
      clip.listed = random.Chance(85);
      clip.essence = random.Chance(80);
      clip.record = random.Chance(80);
      clip.proxy = random.Chance(50);
      clip.thumbnail = random.Chance(80);
      clips.emplace(clip.name, clip);
    }
    Expected expected;
    std::vector<XAVCClip> made;
    for (const auto& [name, clip] : clips) {
      made.push_back(clip);
      // Without the essence only the list has the clip.
      if (!clip.essence && !(clip.listed && withIndex)) continue;
      std::set<std::string> files;
      const std::string folder = m4 ? "CLIP/" : "Clip/";
      const std::string essence = name + (m4 ? ".MP4" : ".MXF");
      if (clip.essence) files.insert(folder + essence);
      if (clip.record) files.insert(folder + name + "M01.XML");
      if (clip.proxy) files.insert((m4 ? "SUB/" : "Sub/") + name + "S03.MP4");
      if (clip.thumbnail) files.insert((m4 ? "THMBNL/" : "Thmbnl/") + name + "T01.JPG");
      if (!files.empty()) expected[essence] = files;
    }
    std::shuffle(made.begin(), made.end(), std::mt19937(seed));
    const TempTree tree;
    MakeXAVCCard(tree, "copy", m4 ? XAVCLayout::kM4Root : XAVCLayout::kXDRoot, made, withIndex);
    const ContentMap content = ProviderSonyXAVC().GetContent(tree.Path("copy"), kPaths, nullptr);
    EXPECT_EQ(FilesOf(content, tree.Path("copy"),
                      {"MEDIAPRO.XML", "STATUS.BIN", "CUEUP.XML", "DISCMETA.XML", "GENERAL", "TAKE",
                       "Edit", "General", "UserData", "Take"}),
              expected);
  }
}

TEST(GeneratedCards, CanonListsEveryFileOfEachRecordingOnce) {
  for (unsigned seed = 0; seed < kSeeds; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const std::string folder = "CONTENTS/CLIPS001/";
    Expected expected;
    std::vector<std::string> files{"INDEX.MIF"};
    std::string key;
    const auto add = [&](const std::string& name) {
      files.push_back(name);
      expected[key].insert(folder + name);
    };
    for (unsigned clip = 0; clip < 1 + random.Below(8); ++clip) {
      const std::string number = std::to_string(100 + clip);
      if (random.Chance(30)) {
        key = "A001C" + number + "_22032472_CANON" + (random.Chance(50) ? ".CRM" : ".mxf");
        add(key);
        continue;
      }
      const std::string base = "A_0001C" + number + "A260711_101700EJ_CANON";
      const unsigned first = random.Below(4);
      for (unsigned part = first; part < first + 1 + random.Below(4); ++part) {
        const std::string stem = base + (random.Chance(50) ? "-00" : "_00") + std::to_string(part);
        if (part == first) key = stem + ".MP4";
        add(stem + ".MP4");
        if (random.Chance(70)) add(stem + ".XML");
        if (random.Chance(30)) add(stem + "_Proxy.MP4");
      }
    }
    const TempTree tree;
    MakeCanonFlatCard(tree, "card", files);
    const std::string root = tree.Path("card");
    EXPECT_EQ(FilesOf(ProviderCanonXFAVC().GetContent(root, kPaths, nullptr), root,
                      {folder + "INDEX.MIF"}),
              expected);
  }
}

}  // namespace
