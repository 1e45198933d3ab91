// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "providers/cards/ProviderP2.h"
#include "providers/cards/ProviderXDCAM.h"
#include "providers/cards/ProviderXDCAMEX.h"
#include "support/Cards.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using Lines = std::vector<std::string>;

// "kind path" of each missing part, the path relative to the tree.
Lines Missing(const StructureFindings& findings, const TempTree& tree) {
  Lines lines;
  for (const StructurePart& part : findings.missing) {
    const bool below = part.path.starts_with(tree.Root() + "/");
    lines.push_back(part.kind + " " +
                    (below ? part.path.substr(tree.Root().size() + 1) : part.path));
  }
  return lines;
}

void Remove(const TempTree& tree, const std::string& file) {
  ASSERT_TRUE(std::filesystem::remove(tree.Path(file))) << file;
}

// A clip with the two sound channels in its record.
void AddCompleteP2Clip(const TempTree& tree, const std::string& card, const P2Clip& clip) {
  AddP2Clip(tree, card, clip);
  for (const char* channel : {"00", "01"}) {
    tree.File(card + "/CONTENTS/AUDIO/" + clip.id + channel + ".MXF");
  }
}

TEST(CardChecks, ReportNothingOnCompleteCards) {
  const TempTree tree;
  MakeP2Card(tree, "p2");
  for (const P2Clip& clip : P2Shot({"0001AA", "0002AA"}, "S1")) AddCompleteP2Clip(tree, "p2", clip);
  MakeXDCAMDisc(tree, "disc", {{"C0001"}, {"C0002"}});
  MakeXDCAMProav(tree, "proav", {{"C0001"}, {"C0002"}});
  MakeXDCAMEXCard(tree, "ex", {{"A_01"}, {"A_02"}}, {{"A", {"A_01", "A_02"}}});
  EXPECT_EQ(Missing(ProviderP2().CheckStructure(tree.Path("p2")), tree), Lines{});
  EXPECT_EQ(Missing(ProviderXDCAM().CheckStructure(tree.Path("disc")), tree), Lines{});
  EXPECT_EQ(Missing(ProviderXDCAM().CheckStructure(tree.Path("proav")), tree), Lines{});
  EXPECT_EQ(Missing(ProviderXDCAMEX().CheckStructure(tree.Path("ex")), tree), Lines{});
}

TEST(CardChecks, ReportMissingPartsOfP2Clips) {
  const TempTree tree;
  MakeP2Card(tree, "card");
  P2Clip clip{.id = "0001AA"};
  clip.extraXml = "<Thumbnail/><Proxy/>";
  AddCompleteP2Clip(tree, "card", clip);
  tree.File("card/CONTENTS/CLIP/0002BB.XML",
            "<P2Main><ClipContent><GlobalClipID>B</GlobalClipID><EssenceList><Video/><Audio/>"
            "<Audio/></EssenceList></ClipContent></P2Main>");
  tree.File("card/CONTENTS/AUDIO/0002BB01.MXF");
  tree.File("card/CONTENTS/CLIP/0003CC.XML", "<P2Main><ClipCon");
  tree.File("card/LASTCLIP.TXT");
  Remove(tree, "card/CONTENTS/ICON/0001AA.BMP");
  const StructureFindings findings = ProviderP2().CheckStructure(tree.Path("card"));
  const std::string contents = "card/CONTENTS/";
  EXPECT_EQ(Missing(findings, tree),
            (Lines{"proxy " + contents + "PROXY/0001AA.MP4", "icon " + contents + "ICON/0001AA.BMP",
                   "video " + contents + "VIDEO/0002BB.MXF",
                   "sound channel " + contents + "AUDIO/0002BB00.MXF",
                   "readable clip record " + contents + "CLIP/0003CC.XML"}));
  EXPECT_EQ(findings.structureFiles, Lines{tree.Path("card/LASTCLIP.TXT")});
}

TEST(CardChecks, SearchNeighbouringCardsForSpansOfP2Shots) {
  const TempTree tree;
  const auto shot = P2Shot({"0001AA", "0002AA", "0003AA"}, "S1");
  for (const char* card : {"one", "two"}) MakeP2Card(tree, card);
  AddCompleteP2Clip(tree, "one", shot[0]);
  AddCompleteP2Clip(tree, "two", shot[1]);
  EXPECT_EQ(Missing(ProviderP2().CheckStructure(tree.Path("one")), tree), Lines{});
  // The last clip is missing, and the previous one references it.
  const StructureFindings findings = ProviderP2().CheckStructure(tree.Path("two"));
  ASSERT_EQ(findings.missing.size(), 1u);
  EXPECT_EQ(findings.missing[0].kind, "span");
  EXPECT_EQ(findings.missing[0].entryKey, "0002AA");
  AddCompleteP2Clip(tree, "one", shot[2]);
  EXPECT_EQ(Missing(ProviderP2().CheckStructure(tree.Path("two")), tree), Lines{});
}

TEST(CardChecks, ReportMissingFilesOfXDCAMIndexes) {
  const TempTree tree;
  MakeXDCAMDisc(tree, "disc", {{"C0001"}, {"C0002"}});
  MakeXDCAMProav(tree, "proav", {{"C0001"}, {"C0002"}});
  Remove(tree, "disc/Clip/C0002.MXF");
  Remove(tree, "disc/Clip/C0001M01.XML");
  std::filesystem::remove_all(tree.Path("disc/Sub"));
  Remove(tree, "proav/PROAV/CLPR/C0001/C0001V01.MXF");
  const Lines disc = Missing(ProviderXDCAM().CheckStructure(tree.Path("disc")), tree);
  for (const char* expected :
       {"essence disc/Clip/C0002.MXF", "clip record disc/Clip/C0001M01.XML"}) {
    EXPECT_NE(std::find(disc.begin(), disc.end(), expected), disc.end()) << expected;
  }
  EXPECT_EQ(std::count_if(disc.begin(), disc.end(),
                          [](const std::string& line) { return line.starts_with("proxy "); }),
            2);
  EXPECT_EQ(disc.size(), 4u);
  EXPECT_EQ(Missing(ProviderXDCAM().CheckStructure(tree.Path("proav")), tree),
            Lines{"essence proav/PROAV/CLPR/C0001/C0001V01.MXF"});
  std::filesystem::remove_all(tree.Path("proav/PROAV/CLPR/C0002"));
  EXPECT_EQ(ProviderXDCAM().CheckStructure(tree.Path("proav")).missing.front().kind, "essence");
  tree.File("disc/MEDIAPRO.XML", MediaProXml(XmlElement("Material", "uri=\"../../../etc/none\"")));
  EXPECT_TRUE(ProviderXDCAM().CheckStructure(tree.Path("disc")).missing.empty());
}

TEST(CardChecks, SearchNeighbouringCardsForPartsOfTakes) {
  const TempTree tree;
  MakeXDCAMEXCard(tree, "one", {{"A_01"}}, {{"A", {"A_01", "A_02"}}});
  const StructureFindings findings = ProviderXDCAMEX().CheckStructure(tree.Path("one"));
  ASSERT_EQ(findings.missing.size(), 1u);
  EXPECT_EQ(findings.missing[0].kind, "span");
  EXPECT_EQ(findings.missing[0].path, UmidOf("A_02"));
  MakeXDCAMEXCard(tree, "two", {{"A_02"}});
  EXPECT_EQ(Missing(ProviderXDCAMEX().CheckStructure(tree.Path("one")), tree), Lines{});
  Remove(tree, "two/BPAV/CLPR/A_02/A_02.MP4");
  EXPECT_EQ(Missing(ProviderXDCAMEX().CheckStructure(tree.Path("two")), tree),
            Lines{"essence two/BPAV/CLPR/A_02/A_02.MP4"});

  // A clip in two takes; the other part of the second take is on another card.
  MakeXDCAMEXCard(tree, "takes", {{"B_01"}, {"B_02"}},
                  {{"B", {"B_01", "B_02"}}, {"C", {"B_01", "C_02"}}});
  MakeXDCAMEXCard(tree, "three", {{"C_02"}});
  EXPECT_EQ(Missing(ProviderXDCAMEX().CheckStructure(tree.Path("takes")), tree), Lines{});
  // Listings compare names ignoring case, and so does the check.
  const std::string clip = "three/BPAV/CLPR/C_02/";
  for (const char* end : {".MP4", "M01.XML", "R01.BIM", "I01.PPN"}) {
    const std::string name = std::string("C_02") + end;
    std::string lower = name;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    std::filesystem::rename(tree.Path(clip + name), tree.Path(clip + lower));
  }
  EXPECT_EQ(Missing(ProviderXDCAMEX().CheckStructure(tree.Path("three")), tree), Lines{});
  Remove(tree, clip + "c_02.mp4");
  const StructureFindings gone = ProviderXDCAMEX().CheckStructure(tree.Path("three"));
  ASSERT_EQ(gone.missing.size(), 1u);
  EXPECT_EQ(gone.missing[0].entryKey, tree.Path(clip + "c_02m01.xml"));
}

TEST(CardChecks, ReportDamagedIndexesAndRecords) {
  const TempTree tree;
  MakeXDCAMDisc(tree, "disc", {{"C0001"}});
  MakeXDCAMProav(tree, "proav", {{"C0001"}});
  MakeXDCAMEXCard(tree, "ex", {{"A_01"}});
  tree.File("disc/Clip/C0001M01.XML", "<NonRealTimeMeta><Dur");
  tree.File("proav/PROAV/CLPR/C0001/C0001M01.XML");
  tree.File("ex/BPAV/CLPR/A_01/A_01M01.XML", "\xFF\xFF");
  const std::string kRecord = "readable clip record ";
  EXPECT_EQ(Missing(ProviderXDCAM().CheckStructure(tree.Path("disc")), tree),
            Lines{kRecord + "disc/Clip/C0001M01.XML"});
  EXPECT_EQ(Missing(ProviderXDCAM().CheckStructure(tree.Path("proav")), tree),
            Lines{kRecord + "proav/PROAV/CLPR/C0001/C0001M01.XML"});
  EXPECT_EQ(Missing(ProviderXDCAMEX().CheckStructure(tree.Path("ex")), tree),
            Lines{kRecord + "ex/BPAV/CLPR/A_01/A_01M01.XML"});
  for (const char* list : {"disc/MEDIAPRO.XML", "proav/PROAV/INDEX.XML", "ex/BPAV/MEDIAPRO.XML"}) {
    tree.File(list, "<MediaProfile><Contents>");
  }
  EXPECT_EQ(Missing(ProviderXDCAM().CheckStructure(tree.Path("disc")), tree),
            Lines{"readable material list disc/MEDIAPRO.XML"});
  EXPECT_EQ(Missing(ProviderXDCAM().CheckStructure(tree.Path("proav")), tree),
            Lines{"readable clip table proav/PROAV/INDEX.XML"});
  EXPECT_EQ(Missing(ProviderXDCAMEX().CheckStructure(tree.Path("ex")), tree),
            Lines{"readable material list ex/BPAV/MEDIAPRO.XML"});
}

}  // namespace
