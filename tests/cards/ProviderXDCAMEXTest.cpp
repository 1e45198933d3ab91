// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "providers/cards/MediaPro.h"
#include "providers/cards/ProviderXDCAMEX.h"
#include "providers/cards/TakeFiles.h"
#include "support/Cards.h"
#include "support/TempTree.h"
#include "support/Values.h"
#include "thumbnails/OwnedBitplate.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace fs = std::filesystem;

const ProviderXDCAMEX kProvider;
const FieldNameSet kPaths{kNameField, kPathField, kExtraPathField};

std::string ClipXml(const TempTree& tree, const std::string& card, const std::string& clip) {
  return tree.Path(card + "/BPAV/CLPR/" + clip + "/" + clip + "M01.XML");
}

// The clip folders of the keys of a listing.
std::vector<std::string> ClipsIn(const ContentMap& content) {
  std::vector<std::string> clips;
  for (const auto& [key, fields] : content) {
    clips.push_back(fs::path(key).parent_path().filename().string());
  }
  return clips;
}

ContentMap List(const TempTree& tree, const std::string& card,
                const FieldNameSet& fields = kPaths) {
  return kProvider.GetContent(tree.Path(card), fields, nullptr);
}

// The extra paths of one clip, relative to the tree.
std::vector<std::string> PathsOf(const TempTree& tree, const std::string& card,
                                 const std::string& clip) {
  const std::string key = ClipXml(tree, card, clip);
  const ContentMap one = kProvider.GetContent(tree.Path(card), key, kPaths);
  return one.contains(key) ? ExtraPathsOf(one.at(key), tree.Root())
                           : std::vector<std::string>{"<no entry>"};
}

std::vector<std::string> FilesOfClip(const std::string& card, const std::string& clip,
                                     bool withEssence) {
  std::vector<std::string> files;
  for (const char* end : {".MP4", "M01.XML", "R01.BIM", "I01.PPN", ".SMI"}) {
    files.push_back(card + "/BPAV/CLPR/" + clip + "/" + clip + end);
  }
  if (!withEssence) files.erase(files.begin());
  return files;
}

std::vector<std::string> FilesOfTake(const std::string& card, const std::string& take) {
  return {card + "/BPAV/TAKR/" + take + "/" + take + "M01.XML",
          card + "/BPAV/TAKR/" + take + "/" + take + ".SMI"};
}

std::vector<std::string> SideFiles(const std::string& card) {
  return {card + "/BPAV/MEDIAPRO.BAK", card + "/BPAV/CUEUP.XML", card + "/BPAV/TAKR"};
}

std::vector<std::string> Join(const std::vector<std::vector<std::string>>& lists) {
  std::vector<std::string> all;
  for (const auto& list : lists) all.insert(all.end(), list.begin(), list.end());
  return all;
}

TEST(ProviderXDCAMEX, ScoresByTheContentsOfItsFolder) {
  const TempTree tree;
  const auto score = [&](const char* card, const std::vector<std::string>& names) {
    for (const auto& name : names) tree.File(std::string(card) + "/BPAV/" + name + "/x");
    return kProvider.CanProvideFor(tree.Path(card));
  };
  EXPECT_EQ(score("takes", {"MEDIAPRO.XML", "CLPR", "TAKR"}), 100);
  EXPECT_EQ(score("no takes", {"MEDIAPRO.XML", "CLPR", "a"}), 40);
  EXPECT_EQ(score("few", {"MEDIAPRO.XML", "CLPR"}), 0);
  EXPECT_EQ(score("hidden", {"MEDIAPRO.XML", "CLPR", ".a"}), 0);
  EXPECT_EQ(score("six", {"MEDIAPRO.XML", "CLPR", "TAKR", "a", "b", "c"}), 100);
  EXPECT_EQ(score("seven", {"MEDIAPRO.XML", "CLPR", "TAKR", "a", "b", "c", "d"}), 0);
  EXPECT_EQ(score("no clips", {"MEDIAPRO.XML", "a", "b"}), 0);
  EXPECT_EQ(score("case", {"mediapro.xml", "CLPR", "TAKR"}), 0);
  tree.Folder("none");
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("none")), 0);
  EXPECT_EQ(kProvider.CanProvideFor(""), 0);
  EXPECT_EQ(kProvider.GetFieldLabelList().size(), 17u);
  EXPECT_EQ(kProvider.GetMaximumThumbnailHeight(480), 16);
  EXPECT_THAT(kProvider.GetDefaultFieldList(), ElementsAre("Name", "Path"));
}

TEST(ProviderXDCAMEX, ListsClipsThatHaveEssence) {
  const TempTree tree;
  MakeXDCAMEXCard(tree, "card",
                  {{.name = "429_0001_01", .title = "Opening"}, {.name = "429_0002_01"}});
  fs::remove(tree.Path("card/BPAV/CLPR/429_0002_01/429_0002_01.MP4"));
  tree.File("card/BPAV/CLPR/lower/lowerm01.xml", NonRealTimeMetaXml({.name = "lower"}));
  tree.File("card/BPAV/CLPR/lower/lower.mp4");
  tree.File("card/BPAV/CLPR/other/other.XML");

  const ContentMap content = List(tree, "card", {"Name", "Path"});
  EXPECT_THAT(ClipsIn(content), ElementsAre("429_0001_01", "lower"));
  const FieldValueMap& first = content.at(ClipXml(tree, "card", "429_0001_01"));
  EXPECT_EQ(TextOf(first, "Name"), "Opening");
  EXPECT_EQ(TextOf(first, "Path"), tree.Path("card/BPAV/CLPR/429_0001_01/429_0001_01.MP4"));
  EXPECT_EQ(first.size(), 2u);
  EXPECT_EQ(TextOf(content.rbegin()->second, "Path"), tree.Path("card/BPAV/CLPR/lower/lower.mp4"));

  // If the shot name is requested as a field, the name is that of the file.
  const ContentMap named = List(tree, "card", {"Name", "shotName"});
  EXPECT_EQ(TextOf(named.begin()->second, "Name"), "429_0001_01");
  EXPECT_EQ(TextOf(named.begin()->second, "shotName"), "Opening");
  EXPECT_THAT(
      kProvider.GetContent(tree.Path("card"), tree.Path("card/BPAV/CLPR/other/other.XML"), kPaths),
      IsEmpty());
}

TEST(ProviderXDCAMEX, MergesTheClipsOfATake) {
  const TempTree tree;
  MakeXDCAMEXCard(tree, "card",
                  {{.name = "B_02"}, {.name = "B_01"}, {.name = "C_01"}, {.name = "D_01"}},
                  {{.name = "B", .clips = {"B_01", "B_02"}}});
  EXPECT_THAT(ClipsIn(List(tree, "card", {})), ElementsAre("B_01", "C_01", "D_01"));
  EXPECT_EQ(TextOf(List(tree, "card", {"relation"}).begin()->second, "relation"), UmidOf("B"));

  EXPECT_THAT(PathsOf(tree, "card", "B_01"),
              testing::ElementsAreArray(Join({FilesOfClip("card", "B_01", false),
                                              FilesOfClip("card", "B_02", true),
                                              FilesOfTake("card", "B"),
                                              {"card/BPAV/MEDIAPRO.XML"},
                                              SideFiles("card")})));
  tree.File("card/BPAV/CLPR/C_01/C_01M01.XMP");
  EXPECT_THAT(PathsOf(tree, "card", "C_01"),
              testing::ElementsAreArray(Join({FilesOfClip("card", "C_01", false),
                                              {"card/BPAV/CLPR/C_01/C_01M01.XMP"},
                                              {"card/BPAV/MEDIAPRO.XML"},
                                              SideFiles("card")})));
}

// A take that spans three cards: each card's playlist lists its own clips and, last and without an
// end, the part on the next card.
class TakeOverCards : public testing::Test {
 protected:
  TakeOverCards() {
    MakeXDCAMEXCard(tree_, "1", {{.name = "T_01"}, {.name = "S_01"}},
                    {{.name = "T1", .clips = {"T_01", "T2"}, .complete = false}});
    MakeXDCAMEXCard(tree_, "2", {{.name = "T_02"}},
                    {{.name = "T2", .clips = {"T_02", "T3"}, .complete = false}});
    MakeXDCAMEXCard(
        tree_, "3", {{.name = "T_03"}},
        {{.name = "T3", .clips = {"T_01", "T_02", "T_03"}, .sources = {"T_01", "T_02", "T_03"}}});
  }

  const TempTree tree_;
};

TEST_F(TakeOverCards, IsAssembled) {
  EXPECT_THAT(PathsOf(tree_, "1", "T_01"),
              testing::ElementsAreArray(
                  Join({FilesOfClip("1", "T_01", false),
                        FilesOfClip("2", "T_02", true),
                        FilesOfClip("3", "T_03", true),
                        FilesOfTake("1", "T1"),
                        FilesOfTake("2", "T2"),
                        FilesOfTake("3", "T3"),
                        {"1/BPAV/MEDIAPRO.XML", "2/BPAV/MEDIAPRO.XML", "3/BPAV/MEDIAPRO.XML"},
                        SideFiles("1"),
                        SideFiles("2"),
                        SideFiles("3")})));
}

TEST_F(TakeOverCards, OmitsMissingCards) {
  fs::remove_all(tree_.Path("3"));
  EXPECT_THAT(PathsOf(tree_, "1", "T_01"),
              testing::AllOf(Contains("1/BPAV/CLPR/T_01/T_01M01.XML"),
                             Not(Contains(testing::StartsWith("3/")))));
  fs::remove_all(tree_.Path("2"));
  EXPECT_THAT(PathsOf(tree_, "1", "T_01"),
              testing::ElementsAreArray(Join({FilesOfClip("1", "T_01", false),
                                              FilesOfTake("1", "T1"),
                                              {"1/BPAV/MEDIAPRO.XML"},
                                              SideFiles("1")})));
}

TEST_F(TakeOverCards, LeavesSingleClipsAlone) {
  EXPECT_THAT(PathsOf(tree_, "1", "S_01"), Not(Contains(testing::StartsWith("2/"))));
}

TEST(ProviderXDCAMEX, FindsTheOtherPartsOfATakeByItsComponents) {
  const TempTree tree;
  MakeXDCAMEXCard(tree, "1", {{.name = "T_01"}}, {{.name = "T", .clips = {"T_01", "T_02"}}});
  MakeXDCAMEXCard(tree, "2", {{.name = "T_02"}}, {{.name = "T", .clips = {"T_01", "T_02"}}});
  for (int i = 0; i < 200; ++i) tree.Folder("sibling" + std::to_string(i));
  EXPECT_THAT(PathsOf(tree, "1", "T_01"), Contains("2/BPAV/CLPR/T_02/T_02.MP4"));
  // Without a playlist, or with one that lists no known clip, the components in the list are used.
  fs::remove(tree.Path("1/BPAV/TAKR/T/T.SMI"));
  EXPECT_THAT(PathsOf(tree, "1", "T_01"), Contains("2/BPAV/CLPR/T_02/T_02.MP4"));
  tree.File("1/BPAV/TAKR/T/T.SMI",
            "<smil><body><par><ref src=\"a:b:FFFF\" clipEnd=\"x\"/></par></body></smil>");
  EXPECT_THAT(PathsOf(tree, "1", "T_01"), Contains("2/BPAV/CLPR/T_02/T_02.MP4"));
}

TEST(ProviderXDCAMEX, IncludesAllClipsOfTheCardInTheirTake) {
  const TempTree tree;
  MakeXDCAMEXCard(tree, "card", {{.name = "T_01"}, {.name = "T_02"}, {.name = "T_03"}},
                  {{.name = "T", .clips = {"T_01", "T_02", "T_03"}, .sources = {"T_02"}},
                   {.name = "U", .clips = {"T_02", "T_03"}}});
  ASSERT_THAT(ClipsIn(List(tree, "card", {})), ElementsAre("T_01"));
  EXPECT_THAT(PathsOf(tree, "card", "T_01"), Contains("card/BPAV/TAKR/U/U.SMI"));
  EXPECT_THAT(PathsOf(tree, "card", "T_01"),
              testing::IsSupersetOf(
                  Join({FilesOfClip("card", "T_01", false), FilesOfClip("card", "T_02", true),
                        FilesOfClip("card", "T_03", true)})));
}

TEST(ProviderXDCAMEX, KeepsClipsWithDuplicateUmidsOrUnusualNames) {
  const TempTree tree;
  // Two clips with the same UMID, as written by a camera whose counter was reset.
  MakeXDCAMEXCard(tree, "same", {{.name = "A_01", .umid = "AA"}, {.name = "A_02", .umid = "AA"}},
                  {{.name = "T", .clips = {"A_01"}}});
  std::string materials = XmlElement("Material", "uri=\"./TAKR/T/T.SMI\" umid=\"T\"",
                                     XmlElement("Component", "umid=\"AA\""));
  for (const std::string clip : {"A_01", "A_02"}) {
    const std::string uri = "./CLPR/" + clip + "/" + clip;
    materials +=
        XmlElement("Material", "uri=\"" + uri + ".SMI\" umid=\"AA\"",
                   XmlElement("Component", "uri=\"" + uri + ".MP4\"") +
                       XmlElement("RelevantInfo", "type=\"XML\" uri=\"" + uri + "M01.XML\""));
  }
  tree.File("same/BPAV/MEDIAPRO.XML", MediaProXml(materials));
  ASSERT_THAT(ClipsIn(List(tree, "same")), ElementsAre("A_01"));
  EXPECT_THAT(
      PathsOf(tree, "same", "A_01"),
      testing::IsSupersetOf({"same/BPAV/CLPR/A_01/A_01M01.XML", "same/BPAV/CLPR/A_02/A_02.MP4",
                             "same/BPAV/CLPR/A_02/A_02M01.XML"}));
  EXPECT_THAT(PathsOf(tree, "same", "A_02"), Contains("same/BPAV/CLPR/A_02/A_02M01.XML"));

  // An empty UMID never matches.
  const std::string list =
      tree.File("none/BPAV/MEDIAPRO.XML",
                MediaProXml(XmlElement("Material", "uri=\"./TAKR/T/T.SMI\"",
                                       XmlElement("Component", "umid=\"\"") +
                                           XmlElement("Component", "umid=\"AA\""))));
  EXPECT_EQ(xdcamex::MediaProCard::Of(list)->TakesWith(""), nullptr);
  EXPECT_NE(xdcamex::MediaProCard::Of(list)->TakesWith("aa"), nullptr);

  // A copy of a clip XML, listed in front of it.
  MakeXDCAMEXCard(tree, "copy", {{.name = "B_01"}, {.name = "B_02"}},
                  {{.name = "B", .clips = {"B_01", "B_02"}}});
  tree.File("copy/BPAV/CLPR/B_01/B_01M01 (copy).XML", NonRealTimeMetaXml({.name = "B_01"}));
  EXPECT_THAT(ClipsIn(List(tree, "copy")), ElementsAre("B_01"));

  // A clip whose name begins with BPAV, in a parent directory with the name of an essence.
  MakeXDCAMEXCard(tree, "C_02.MP4", {{.name = "BPAV_01"}, {.name = "C_02"}});
  for (const char* clip : {"BPAV_01", "C_02"}) {
    EXPECT_THAT(PathsOf(tree, "C_02.MP4", clip),
                testing::IsSupersetOf(FilesOfClip("C_02.MP4", clip, false)));
  }
}

TEST(ProviderXDCAMEX, LimitsTakesThatAllContainAllClips) {
  const TempTree tree;
  MakeXDCAMEXCard(tree, "card", {{.name = "A_01"}, {.name = "A_02"}},
                  {{.name = "S", .clips = {"A_01", "all"}, .playlist = false},
                   {.name = "T", .clips = {"A_02", "all"}, .playlist = false},
                   {.name = "all", .clips = {"A_01", "A_02"}, .playlist = false}});
  std::size_t recordsLeft = 3;
  const auto clipsOf = [&](const std::string& clip) {
    const std::string path = tree.Path("card/BPAV/CLPR/" + clip + "/" + clip + ".MP4");
    return xdcamex::GatherTake(path, recordsLeft).clips;
  };
  EXPECT_EQ(clipsOf("A_01").size(), 2u);
  EXPECT_EQ(recordsLeft, 0u);
  const auto last = clipsOf("A_02");
  ASSERT_EQ(last.size(), 1u);
  EXPECT_EQ(last[0].umid, UmidOf("A_02"));
}

TEST(ProviderXDCAMEX, EndsIfTakesContainThemselvesOrOneAnother) {
  const TempTree tree;
  MakeXDCAMEXCard(tree, "card", {{.name = "A_01"}, {.name = "B_01"}},
                  {{.name = "A", .clips = {"A_01", "A"}},
                   {.name = "B", .clips = {"C", "B_01"}},
                   {.name = "C", .clips = {"B"}}});
  EXPECT_THAT(PathsOf(tree, "card", "A_01"), Contains("card/BPAV/CLPR/A_01/A_01M01.XML"));
  EXPECT_THAT(PathsOf(tree, "card", "B_01"), Contains("card/BPAV/CLPR/B_01/B_01M01.XML"));
}

// If such a clip were merged, its files would be neither in an entry nor in the extra paths.
TEST(ProviderXDCAMEX, MergesNoClipThatIsMissingInTheList) {
  const TempTree tree;
  MakeXDCAMEXCard(tree, "card", {{.name = "B_01"}, {.name = "B_02"}},
                  {{.name = "B", .clips = {"B_01", "B_02", "B_03"}}});
  tree.File("card/BPAV/CLPR/B_03/B_03M01.XML", NonRealTimeMetaXml({.name = "B_03"}));
  tree.File("card/BPAV/CLPR/B_03/B_03.MP4");
  EXPECT_THAT(ClipsIn(List(tree, "card")), ElementsAre("B_01", "B_03"));
  tree.File("card/BPAV/MEDIAPRO.XML",
            MediaProXml(XmlElement("Material", "uri=\"./CLPR/B_03/B_03.SMI\" umid=\"3\"",
                                   XmlElement("Component", "uri=\"./CLPR/B_03/B_03.MP4\"")) +
                        XmlElement("Material", "uri=\"./CLPR/B_02/B_02.SMI\" umid=\"2\"",
                                   XmlElement("Component", "uri=\"./CLPR/B_02/B_02.MP4\"")) +
                        XmlElement("Material", "uri=\"./TAKR/B/B.SMI\" umid=\"B\"",
                                   XmlElement("Component", "umid=\"3\"") +
                                       XmlElement("Component", "umid=\"2\""))));
  EXPECT_THAT(ClipsIn(List(tree, "card")), ElementsAre("B_01", "B_02"));
  tree.File("card/BPAV/MEDIAPRO.XML", "<MediaProfile><Contents>");
  EXPECT_THAT(ClipsIn(List(tree, "card")), ElementsAre("B_01", "B_02", "B_03"));
  EXPECT_THAT(PathsOf(tree, "card", "B_01"),
              testing::ElementsAreArray(Join({{"card/BPAV/MEDIAPRO.XML"}, SideFiles("card")})));
  fs::remove(tree.Path("card/BPAV/MEDIAPRO.XML"));
  EXPECT_THAT(PathsOf(tree, "card", "B_01"), IsEmpty());
}

TEST(ProviderXDCAMEX, IgnoresUrisThatLeadOffTheCard) {
  const TempTree tree;
  MakeXDCAMEXCard(tree, "card", {{.name = "A_01"}});
  tree.File("secret");
  tree.File("card/BPAV/CLPR/A_01/inner");
  std::string infos = XmlElement("Component", "uri=\"./CLPR/A_01/A_01.MP4\" umid=\"1\"");
  infos += XmlElement("RelevantInfo", "type=\"XML\" uri=\"./../../secret\"");
  infos += XmlElement("RelevantInfo", "type=\"BiM\" uri=\"./CLPR/A_01/inner\"");
  infos += XmlElement("RelevantInfo", "type=\"PPN\" uri=\".//../../../../../../../etc/passwd\"");
  tree.File("card/BPAV/MEDIAPRO.XML",
            MediaProXml(XmlElement("Material", "uri=\"./CLPR/../../../secret\"", infos) +
                        XmlElement("Material", "uri=\"./CLPR/A_01/A_01.SMI\"", infos)));
  EXPECT_THAT(PathsOf(tree, "card", "A_01"),
              ElementsAre("card/BPAV/CLPR/A_01/inner", "card/BPAV/CLPR/A_01/A_01.SMI",
                          "card/BPAV/MEDIAPRO.XML", "card/BPAV/MEDIAPRO.BAK", "card/BPAV/CUEUP.XML",
                          "card/BPAV/TAKR"));
}

TEST(ProviderXDCAMEX, SurvivesDamagedFiles) {
  const TempTree tree;
  MakeXDCAMEXCard(tree, "card", {{.name = "A_01"}, {.name = "B_01"}, {.name = "C_01"}},
                  {{.name = "A", .clips = {"A_01"}}});
  tree.File("card/BPAV/CLPR/B_01/B_01M01.XML", "<NonRealTimeMeta><Dur");
  fs::remove(tree.Path("card/BPAV/TAKR/A/A.SMI"));
  ASSERT_EQ(mkfifo(tree.Path("card/BPAV/TAKR/A/A.SMI").c_str(), 0600), 0);
  fs::remove(tree.Path("card/BPAV/CLPR/C_01/C_01.MP4"));
  ASSERT_EQ(mkfifo(tree.Path("card/BPAV/CLPR/C_01/C_01.MP4").c_str(), 0600), 0);
  EXPECT_THAT(ClipsIn(List(tree, "card")), ElementsAre("A_01", "B_01"));
  EXPECT_THAT(PathsOf(tree, "card", "A_01"), Not(Contains("card/BPAV/TAKR/A/A.SMI")));
}

TEST(ProviderXDCAMEX, ShowsTheIconOfTheEssence) {
  const std::string key = "/card/BPAV/CLPR/a/am01.xml";
  const OwnedBitplate icon(kProvider.GetThumbnail("/card", key, 80, 60, nullptr));
  ASSERT_NE(icon, nullptr);
  EXPECT_EQ(bitplateGetWidth(icon.get()), 16);
  EXPECT_EQ(kProvider.GetThumbnail("/card", "M01.XML", 16, 16, nullptr), nullptr);
  EXPECT_EQ(kProvider.GetThumbnail("/card", "/card/a.MP4", 16, 16, nullptr), nullptr);
}

TEST(ProviderXDCAMEX, StopsWhenAborted) {
  const TempTree tree;
  MakeXDCAMEXCard(tree, "card", {{.name = "A_01"}});
  const auto request = Hestra::InterfaceRef<ProviderContentRequest>(
      new ProviderContentRequest("test", {}, tree.Path("card"), kPaths));
  EXPECT_EQ(kProvider.GetContent(tree.Path("card"), kPaths, &*request).size(), 1u);
  request->Abort();
  EXPECT_THAT(kProvider.GetContent(tree.Path("card"), kPaths, &*request), IsEmpty());
}

}  // namespace
