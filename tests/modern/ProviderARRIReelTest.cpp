// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "providers/modern/ProviderARRIReel.h"
#include "support/CheckText.h"
#include "support/MadeMedia.h"
#include "support/TempTree.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::ElementsAre;
using testing::IsEmpty;

const ProviderARRIReel kProvider;
const std::string kId = "com.halvane.Merisk.ProviderARRIReel";
const FieldNameSet kPaths{kNameField, kPathField, kExtraPathField, kProxyPathField};

TEST(ARRIClipNames, HaveCameraReelAndSerial) {
  struct Case {
    const char* stem;
    const char* reel;
    const char* camera;
  };
  for (const Case& c :
       std::initializer_list<Case>{{"A001C010_100610_R1JL", "A001R1JL", "A"},
                                   {"a001c010_20100610_r1jl", "A001R1JL", "A"},
                                   {"A_0001C001_230202_052359_h12NR", "A_0001_12NR", "A"},
                                   {"AB0001C001_230202_052359_h12N", "AB0001_12N", "AB"},
                                   // Names of other cameras.
                                   {"A001C001_250925AB", "", ""},
                                   {"A001C004_22032472_CANON", "", ""},
                                   {"A001C010_100610_R1JLX", "", ""},
                                   {"A_0001C001_230202_052359_h12NRX", "", ""},
                                   {"A001D010_100610_R1JL", "", ""},
                                   {"", "", ""}}) {
    const auto name = ParseArriClipName(c.stem);
    EXPECT_EQ(name ? name->reel : "", c.reel) << c.stem;
    EXPECT_EQ(name ? name->camera : "", c.camera) << c.stem;
  }
}

TEST(ProviderARRIReel, ListsClipsAndNamesReelFiles) {
  const TempTree tree;
  const auto add = [&tree](const std::string& name) {
    tree.File("A_0001_12NR/" + name, MadeMedia(name));
  };
  add("A_0001C001_230202_052359_h12NR.mxf");
  add("A_0001C002_230202_052459_h12NR.mxf");
  add("A_0001C002_230202_052459_h12NR.wav");
  for (const char* list : {"A_0001_12NR_AVID.ale", "A_0001_12NR_BIN.bin", "index.xml"}) add(list);
  tree.File("A_0001_12NR/._A_0001C001_230202_052359_h12NR.mxf");
  const std::string root = tree.Path("A_0001_12NR");
  EXPECT_EQ(kProvider.CanProvideFor(root), 100);
  const ContentMap content = kProvider.GetContent(root, {kExtraPathField, "camera"}, nullptr);
  EXPECT_THAT(KeysOf(content), ElementsAre("A_0001C001_230202_052359_h12NR.mxf",
                                           "A_0001C002_230202_052459_h12NR.mxf"));
  const FieldValueMap& clip = content.at("A_0001C002_230202_052459_h12NR.mxf");
  EXPECT_EQ(TextOf(clip, kNameField), "A_0001C002_230202_052459_h12NR");
  EXPECT_EQ(TextOf(clip, "camera"), "A");
  EXPECT_THAT(ExtraPathsOf(clip, root),
              ElementsAre("A_0001C002_230202_052459_h12NR.wav", "A_0001_12NR_AVID.ale",
                          "A_0001_12NR_BIN.bin", "index.xml"));
  tree.File("A_0001_12NR/A_0001C002_230202_052459_h12NR.mxf", "");
  const Checked checked(kId, root);
  EXPECT_THAT(checked.findings,
              ElementsAre("empty error essence A_0001C002_230202_052459_h12NR.mxf"));
  EXPECT_THAT(checked.foreign, IsEmpty());
}

TEST(ProviderARRIReel, RecognizesByContent) {
  const TempTree tree;
  const std::string clip = "A001C010_100610_R1JL.mov";
  tree.File("renamed/" + clip);
  tree.File("renamed/notes.txt");
  tree.File("mixed/" + clip);
  tree.File("mixed/other.mov");
  tree.File("reels/" + clip);
  tree.File("reels/B001C010_100610_R1JL.mov");
  tree.File("A001R1JL/other.mov");
  tree.File("types/A001C010_100610_R1JL.mp4");
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("renamed")), 100);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("mixed")), 40);
  for (const char* other : {"reels", "A001R1JL", "types", "missing"}) {
    EXPECT_EQ(kProvider.CanProvideFor(tree.Path(other)), 0) << other;
  }
}

}  // namespace
