// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "providers/modern/CanonFlatCard.h"
#include "providers/modern/PartDurations.h"
#include "providers/modern/ProviderCanonXFAVC.h"
#include "support/ModernCards.h"
#include "support/TempTree.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using canonflat::ParseClipName;
using testing::ElementsAre;
using testing::IsEmpty;

const ProviderCanonXFAVC kProvider;
const FieldNameSet kPaths{kNameField, kPathField, kExtraPathField, kProxyPathField};
const std::string kTake = "A_0001C313A260711_101700EJ_CANON";

TEST(CanonFlatNames, HavePartNumbersOnlyInTheNumberedForm) {
  struct Case {
    std::string stem;
    std::string base;
    int part;  // -1: none
    bool isProxy;
  };
  for (const Case& c : std::vector<Case>{
           {kTake, kTake, -1, false},
           {kTake + "-008", kTake, 8, false},
           {kTake + "_001", kTake, 1, false},
           {kTake + "_002_Proxy", kTake, 2, true},
           {kTake + "_PROXY", kTake, -1, true},
           {"A_0002C015X250315_235831EJ_CANON", "A_0002C015X250315_235831EJ_CANON", -1, false},
           // Names of older cameras, and names that only resemble the form.
           {"A001C004_22032472_CANON", "A001C004_22032472_CANON", -1, false},
           {"A001C004_220324AB_001", "A001C004_220324AB_001", -1, false},
           {kTake + "-0081", kTake + "-0081", -1, false},
           {"A_0001E313A260711_101700EJ-001", "A_0001E313A260711_101700EJ", 1, false},
           {"", "", -1, false},
           {"_Proxy", "_Proxy", -1, false}}) {
    const canonflat::ClipName name = ParseClipName(c.stem);
    EXPECT_EQ(name.base, c.base) << c.stem;
    EXPECT_EQ(name.part ? static_cast<int>(*name.part) : -1, c.part) << c.stem;
    EXPECT_EQ(name.isProxy, c.isProxy) << c.stem;
  }
}

TEST(ProviderCanonXFAVC, ListsRecordingsWithTheirFiles) {
  const TempTree tree;
  MakeCanonFlatCard(tree, "card",
                    {"A001C001_25081423_CANON.CRM", kTake + "-002.MP4", kTake + "-001.MP4",
                     kTake + "-001.XML", kTake + "-002.XML", kTake + "-001_Proxy.MP4",
                     "._" + kTake + "-001.MP4", "AA0001/AA000101.MXF", "INDEX.MIF"});
  tree.File("card/PRIVATE/AUDIO/" + kTake + ".WAV", "sound");
  tree.File("card/CONTENTS/CLIPS002/A001C001_25081423_CANON.CRM", "of the same name");
  const std::string root = tree.Path("card");
  EXPECT_EQ(kProvider.CanProvideFor(root), 100);
  const ContentMap content = kProvider.GetContent(root, kPaths, nullptr);
  EXPECT_THAT(KeysOf(content), ElementsAre("A001C001_25081423_CANON.CRM", kTake + "-001.MP4",
                                           "CLIPS002/A001C001_25081423_CANON.CRM"));
  const FieldValueMap& take = content.at(kTake + "-001.MP4");
  const std::string clips = "CONTENTS/CLIPS001/";
  EXPECT_EQ(TextOf(take, kNameField), kTake + "-001");
  EXPECT_EQ(TextOf(take, kPathField), root + "/" + clips + kTake + "-001.MP4");
  EXPECT_EQ(TextOf(take, kProxyPathField), root + "/" + clips + kTake + "-001_Proxy.MP4");
  EXPECT_THAT(ExtraPathsOf(take, root),
              ElementsAre(clips + kTake + "-002.MP4", clips + kTake + "-001_Proxy.MP4",
                          clips + kTake + "-001.XML", clips + kTake + "-002.XML",
                          "PRIVATE/AUDIO/" + kTake + ".WAV", clips + "INDEX.MIF"));
  EXPECT_EQ(kProvider.GetContent(root, kTake + "-001.MP4", kPaths).begin()->second, take);
  for (const char* key : {"", "..", "../card", "A001C001", "AA000101"}) {
    EXPECT_THAT(kProvider.GetContent(root, key, kPaths), IsEmpty()) << key;
  }
}

TEST(ProviderCanonXFAVC, ChoosesTheOriginalAmongFilesOfOneName) {
  const TempTree tree;
  MakeCanonFlatCard(
      tree, "card",
      {"A001C001_25081423_CANON.MP4", "A001C001_25081423_CANON.CRM", kTake + "_Proxy.MP4"});
  EXPECT_THAT(KeysOf(kProvider.GetContent(tree.Path("card"), kPaths, nullptr)),
              ElementsAre("A001C001_25081423_CANON.CRM", kTake + "_Proxy.MP4"))
      << "a proxy without its original is a recording";
}

TEST(ProviderCanonXFAVC, ScoresByWhatIsNextToTheClips) {
  const TempTree tree;
  MakeCanonFlatCard(tree, "foldered", {"AA0001/AA000101.MXF", "INDEX.MIF"});
  MakeCanonFlatCard(tree, "stray", {"A.CRM", "notes.txt"});
  MakeCanonFlatCard(tree, "beside", {"A.CRM"});
  tree.File("beside/other.mov");
  MakeCanonFlatCard(tree, "stills", {"A.CRM"});
  tree.Folder("stills/DCIM/100EOSR5");
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("foldered")), 0);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("stray")), 40);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("beside")), 40);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("stills")), 100);
  for (const char* other : {"stills/CONTENTS", "missing"}) {
    EXPECT_EQ(kProvider.CanProvideFor(tree.Path(other)), 0) << other;
  }
}

TEST(ProviderCanonXFAVC, ListsItsClipsNextToTheProviderOfClipFolders) {
  const TempTree tree;
  MakeCanonFlatCard(tree, "card",
                    {"A001C001_25081423_CANON.CRM", "AA0001/AA000101.MXF", "INDEX.MIF"});
  ProviderHost::Initialize();
  ProviderHost::RegisterAdditionalProviders();
  std::vector<std::string> found;
  for (const FoundCard& card : FindCards(tree.Path("card"), SearchDirection::kNearby)) {
    found.push_back(card.identification);
  }
  ProviderHost::Shutdown();
  EXPECT_THAT(found, ElementsAre("com.halvane.Merisk.ProviderCanonXFAVC",
                                 "com.halvane.Merisk.ProviderCanonXF"));
}

TEST(PartDurations, AddsFramesOfPartsAndKeepsOtherFields) {
  PartDurations durations({"duration"});
  EXPECT_EQ(durations.FieldsOfFirst(), (FieldNameSet{"duration", "frameCount"}));
  FieldValueMap values{{"duration", any_regular_t(std::string("00:00:04:00"))},
                       {"frameCount", any_regular_t(std::string("100 @ 1/25"))}};
  durations.Add("50 @ 1/25");
  durations.Add("not a count");
  durations.Add(std::uint64_t{25});
  durations.Add(~std::uint64_t{0});
  durations.SetTotal(values);
  EXPECT_EQ(TextOf(values, "duration"), "00:00:07:00");
  EXPECT_EQ(values.size(), 1u) << "the frame count wasn't requested";
}

}  // namespace
