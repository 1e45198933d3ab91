// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "providers/modern/ProviderCanonXFAVC.h"
#include "providers/modern/ProviderSonyXAVC.h"
#include "support/ModernCards.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::Contains;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

// "kind path" of each missing part.
std::vector<std::string> Missing(const StructureFindings& findings, const TempTree& tree) {
  std::vector<std::string> texts;
  for (const StructurePart& part : findings.missing) {
    texts.push_back(part.kind + " " + part.path.substr(tree.Path("card/").size()));
  }
  return texts;
}

TEST(ModernChecks, AcceptACompleteXAVCCard) {
  const TempTree tree;
  MakeXAVCCard(tree, "card", XAVCLayout::kXDRoot, {{.name = "C0001"}, {.name = "C0005"}});
  const StructureFindings findings = ProviderSonyXAVC().CheckStructure(tree.Path("card"));
  EXPECT_THAT(Missing(findings, tree), IsEmpty());
  EXPECT_THAT(findings.unreached, IsEmpty());
  EXPECT_THAT(findings.structureFiles, Contains(tree.Path("card/CUEUP.XML")));
}

TEST(ModernChecks, ReportWhatTheMaterialListAndTheRecordsProve) {
  const TempTree tree;
  const XAVCClip stale{
      .name = "C0003", .essence = false, .record = false, .proxy = false, .thumbnail = false};
  XAVCClip onlyRecord = stale;
  onlyRecord.name = "C0005";
  onlyRecord.record = true;
  onlyRecord.listed = false;
  MakeXAVCCard(tree, "card", XAVCLayout::kM4Root,
               {{.name = "C0001", .essence = false},
                stale,
                {.name = "C0004", .thumbnail = false},
                onlyRecord});
  tree.File("card/SUB/C0099S03.MP4", "of no clip");
  tree.File("card/CLIP/C0004M01.XML", "<NonRealTimeMeta><broken");
  StructureFindings findings = ProviderSonyXAVC().CheckStructure(tree.Path("card"));
  EXPECT_THAT(
      Missing(findings, tree),
      UnorderedElementsAre("essence CLIP/C0001.MP4", "thumbnail THMBNL/C0004T01.JPG",
                           "readable clip record CLIP/C0004M01.XML", "essence CLIP/C0005.MP4"));
  ASSERT_EQ(findings.unreached.size(), 1u);
  EXPECT_EQ(findings.unreached.front().path, tree.Path("card/SUB/C0099S03.MP4"));
  fs::remove(tree.Path("card/MEDIAPRO.XML"));
  findings = ProviderSonyXAVC().CheckStructure(tree.Path("card"));
  EXPECT_THAT(Missing(findings, tree), Contains("material list MEDIAPRO.XML"));
}

TEST(ModernChecks, ReportMissingPartsOfCanonRecordings) {
  const TempTree tree;
  const std::string take = "A_0001C313A260711_101700EJ_CANON";
  MakeCanonFlatCard(tree, "card", {take + "-002.CRM", take + "-004.CRM", "B.CRM"});
  EXPECT_THAT(Missing(ProviderCanonXFAVC().CheckStructure(tree.Path("card")), tree),
              UnorderedElementsAre("segment CONTENTS/CLIPS001/" + take + "-003.CRM"));
}

}  // namespace
