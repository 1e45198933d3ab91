// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "support/ModernCards.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::Contains;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

class ModernChecks : public testing::Test {
 protected:
  void SetUp() override {
    ProviderHost::Initialize();
    ProviderHost::RegisterAdditionalProviders();
  }
  void TearDown() override { ProviderHost::Shutdown(); }

  CardFindings Check(const std::string& provider) {
    return CheckCard(tree_.Path("card"), "com.halvane.Merisk." + provider);
  }
  // "kind severity role path" of each finding.
  std::vector<std::string> Findings(const CardFindings& result) {
    std::vector<std::string> texts;
    for (const Finding& finding : result.findings) {
      const std::string root = tree_.Path("card") + "/";
      const std::string path =
          finding.path.starts_with(root) ? finding.path.substr(root.size()) : finding.path;
      texts.push_back(std::string(NameOf(finding.kind)) + " " +
                      std::string(NameOf(finding.severity)) + " " + finding.role + " " + path);
    }
    return texts;
  }

  const TempTree tree_;
};

TEST_F(ModernChecks, AcceptACompleteXAVCCard) {
  MakeXAVCCard(tree_, "card", XAVCLayout::kXDRoot, {{.name = "C0001"}, {.name = "C0005"}});
  const CardFindings result =
      CheckCard(tree_.Path("card"), "com.halvane.Merisk.ProviderSonyXAVC", CheckDepth::kNames);
  EXPECT_THAT(Findings(result), IsEmpty());
  EXPECT_TRUE(result.complete);
  EXPECT_EQ(result.clips, 2u);
  for (const CardFile& file : result.files)
    EXPECT_NE(file.role, CardFileRole::kForeign) << file.path;
}

TEST_F(ModernChecks, ReportWhatTheMaterialListAndTheRecordsProve) {
  MakeXAVCCard(
      tree_, "card", XAVCLayout::kM4Root,
      {{.name = "C0001", .essence = false},
       {.name = "C0002", .listed = false},
       {.name = "C0003", .essence = false, .record = false, .proxy = false, .thumbnail = false},
       {.name = "C0004", .thumbnail = false},
       {.name = "C0005", .listed = false, .essence = false, .proxy = false, .thumbnail = false}});
  tree_.File("card/SUB/C0099S03.MP4", "of no clip");
  tree_.File("card/CLIP/C0004M01.XML", "<NonRealTimeMeta><broken");
  const CardFindings result =
      CheckCard(tree_.Path("card"), "com.halvane.Merisk.ProviderSonyXAVC", CheckDepth::kNames);
  EXPECT_FALSE(result.complete);
  EXPECT_THAT(
      Findings(result),
      UnorderedElementsAre(
          "missing error essence CLIP/C0001.MP4", "unlisted warning essence CLIP/C0002.MP4",
          "stale warning essence CLIP/C0003.MP4", "missing warning thumbnail THMBNL/C0004T01.JPG",
          "unreadable error clip record CLIP/C0004M01.XML", "missing error essence CLIP/C0005.MP4",
          "orphaned error essence SUB/C0099S03.MP4"));
  fs::remove(tree_.Path("card/MEDIAPRO.XML"));
  EXPECT_THAT(Findings(Check("ProviderSonyXAVC")), Contains("missing error index MEDIAPRO.XML"));
}

TEST_F(ModernChecks, ReportALostFolderOfClips) {
  MakeXAVCCard(tree_, "card/M4ROOT", XAVCLayout::kM4Root, {{.name = "C0001", .proxy = false}});
  fs::remove_all(tree_.Path("card/M4ROOT/CLIP"));
  const auto found = FindCards(tree_.Path("card"), SearchDirection::kNearby);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found.front().score, 40);
  EXPECT_THAT(Findings(CheckCard(found.front().path, found.front().identification)),
              UnorderedElementsAre("missing error essence M4ROOT/CLIP/C0001.MP4",
                                   "missing error clip record M4ROOT/CLIP/C0001M01.XML"));
}

TEST_F(ModernChecks, NoteInferredParts) {
  MakeXAVCCard(tree_, "card", XAVCLayout::kM4Root,
               {{.name = "C0001"},
                {.name = "C0002",
                 .start = "00040010",
                 .end = "24070010",
                 .created = "2024-05-06T10:00:04+02:00"}});
  const CardFindings result =
      CheckCard(tree_.Path("card"), "com.halvane.Merisk.ProviderSonyXAVC", CheckDepth::kNames);
  ASSERT_THAT(Findings(result), testing::ElementsAre("unlisted note span CLIP/C0002.MP4"));
  EXPECT_TRUE(result.findings.front().detail.starts_with("inferred"));
  EXPECT_EQ(result.findings.front().entryKeys, std::vector<std::string>{"C0001.MP4"});
  EXPECT_TRUE(result.complete);
}

TEST_F(ModernChecks, ReportPartsOfCanonRecordings) {
  const std::string take = "A_0001C313A260711_101700EJ_CANON";
  MakeCanonFlatCard(tree_, "card", {take + "-002.CRM", take + "-004.CRM", "B.CRM", "notes.txt"});
  tree_.File("card/CONTENTS/CLIPS001/B.XML", "<open>");
  const CardFindings result = Check("ProviderCanonXFAVC");
  EXPECT_THAT(Findings(result),
              UnorderedElementsAre("missing error segment CONTENTS/CLIPS001/" + take + "-003.CRM",
                                   "unreadable error clip record CONTENTS/CLIPS001/B.XML"));
}

}  // namespace
