// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "providers/cards/ProviderP2.h"
#include "support/Cards.h"
#include "support/RealMount.h"
#include "support/TempTree.h"
#include "support/Values.h"
#include "thumbnails/OwnedBitplate.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

const ProviderP2 kProvider;
const FieldNameSet kWithExtraPath{kNameField, kPathField, kExtraPathField};

ContentMap List(const TempTree& tree, const std::string& card, const FieldNameSet& fields) {
  return kProvider.GetContent(tree.Path(card), fields, nullptr);
}

void SetModTime(const std::string& path, std::time_t seconds) {
  const timespec times[2] = {{seconds, 0}, {seconds, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

struct ScoreCase {
  const char* why;
  std::vector<std::string> files;    // relative to the card
  std::vector<std::string> folders;  // in addition to the five
  const char* missing;               // one of the five, or null
  int score;
};

class P2Score : public testing::TestWithParam<ScoreCase> {};

TEST_P(P2Score, DependsOnTheLayout) {
  const TempTree tree;
  MakeP2Card(tree, "card");
  for (const auto& file : GetParam().files) tree.File("card/" + file);
  for (const auto& folder : GetParam().folders) tree.Folder("card/" + folder);
  if (GetParam().missing != nullptr) {
    fs::remove(tree.Path(std::string("card/CONTENTS/") + GetParam().missing));
  }
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("card")), GetParam().score) << GetParam().why;
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, P2Score,
    testing::Values(
        ScoreCase{"bare card", {}, {}, nullptr, 100},
        ScoreCase{"last clip alone", {"LASTCLIP.TXT"}, {}, nullptr, 100},
        ScoreCase{"last clip and another", {"LASTCLIP.TXT", "a.txt"}, {}, nullptr, 40},
        ScoreCase{"unrelated file", {"a.txt"}, {}, nullptr, 40},
        ScoreCase{"hidden file", {".a"}, {}, nullptr, 100},
        ScoreCase{"unrelated folder", {}, {"A"}, nullptr, 40},
        ScoreCase{
            "last clip makes up for an unrelated folder", {"LASTCLIP.TXT"}, {"A"}, nullptr, 100},
        ScoreCase{"folder listed after CONTENTS and Desktop", {}, {"Desktop", "E"}, nullptr, 100},
        ScoreCase{"hidden folder", {}, {".Trashes"}, nullptr, 100},
        ScoreCase{"one of five missing", {}, {"CONTENTS/OTHER"}, "ICON", 0},
        ScoreCase{"only four folders", {}, {}, "PROXY", 0},
        ScoreCase{"long-GOP folder, listed before CLIP", {}, {"CONTENTS/AVCLIP"}, nullptr, 40},
        ScoreCase{"voice folder, listed after VIDEO", {}, {"CONTENTS/VOICE"}, nullptr, 100},
        ScoreCase{"unrelated file in CONTENTS", {"CONTENTS/a"}, {}, nullptr, 40},
        ScoreCase{"desktop database", {"CONTENTS/.DS_Store"}, {}, nullptr, 100},
        ScoreCase{"names in another case", {}, {"CONTENTS/icon"}, "ICON", 0}));

TEST(ProviderP2, RejectsPathsThatAreNotFolders) {
  const TempTree tree;
  EXPECT_EQ(kProvider.CanProvideFor(""), 0);
  EXPECT_EQ(kProvider.CanProvideFor("relative/path"), 0);
  EXPECT_EQ(kProvider.CanProvideFor(tree.File("file")), 0);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("missing")), 0);
  EXPECT_THAT(List(tree, "missing", {}), IsEmpty());
}

TEST(ProviderP2, DescribesItself) {
  EXPECT_EQ(kProvider.GetFieldList().size(), XMPSupport::kFieldCount);
  EXPECT_EQ(kProvider.GetFieldLabelList().size(), 29u);
  EXPECT_THAT(kProvider.GetDefaultFieldList(),
              ElementsAre("Name", "CreateDate", "ModifyDate", "startTimecode", "videoFrameRate",
                          "duration", "good"));
  EXPECT_EQ(kProvider.GetMaximumThumbnailHeight(17), 17);
  EXPECT_EQ(kProvider.GetIdentification(), "com.halvane.Merisk.ProviderP2");
}

TEST(ProviderP2, ListsClipsThatHaveEssence) {
  const TempTree tree;
  MakeP2Card(tree, "card");
  AddP2Clip(tree, "card", {.id = "0001AA"});
  AddP2Clip(tree, "card", {.id = "0002BB", .essence = "AUDIO"});
  AddP2Clip(tree, "card", {.id = "0003CC", .essence = "AVCLIP"});
  AddP2Clip(tree, "card", {.id = "0004DD", .essence = ""});
  AddP2Clip(tree, "card", {.id = ".005EE"});
  const ContentMap content = List(tree, "card", {"Name", "Path", "duration", "startTimecode"});
  EXPECT_THAT(KeysOf(content), ElementsAre("0001AA", "0002BB", "0003CC"));
  const std::string contents = tree.Path("card/CONTENTS/");
  EXPECT_EQ(TextOf(content.at("0001AA"), "Path"), contents + "VIDEO/0001AA.MXF");
  EXPECT_EQ(TextOf(content.at("0002BB"), "Path"), contents + "AUDIO/0002BB00.MXF");
  EXPECT_EQ(TextOf(content.at("0003CC"), "Path"), contents + "AVCLIP/0003CC.MXF");
  EXPECT_EQ(TextOf(content.at("0001AA"), "duration"), "00:00:04:00");
  EXPECT_EQ(TextOf(content.at("0001AA"), "startTimecode"), "10:20:30:12");
  EXPECT_EQ(TextOf(content.at("0001AA"), "frameCount"), "100 @ 1/25");
  EXPECT_FALSE(content.at("0001AA").contains("ExtraPath"));
}

TEST(ProviderP2, PrefersTheShotNameUnlessItRepeatsTheId) {
  const TempTree tree;
  MakeP2Card(tree, "card");
  AddP2Clip(tree, "card", {.id = "0001AA", .userName = "Interview"});
  AddP2Clip(tree, "card", {.id = "0002BB", .userName = P2GlobalId("0002BB")});
  P2Clip titled{.id = "0003CC"};
  std::string xml = P2ClipXml(titled);
  xml.replace(xml.find("<ClipName>0003CC"), 16, "<ClipName>Title3");
  AddP2Clip(tree, "card", titled);
  tree.File("card/CONTENTS/CLIP/0003CC.XML", xml);
  for (const FieldNameSet& fields : {FieldNameSet{"Name"}, FieldNameSet{}}) {
    const ContentMap content = List(tree, "card", fields);
    EXPECT_EQ(TextOf(content.at("0001AA"), "Name"), "Interview");
    EXPECT_EQ(TextOf(content.at("0002BB"), "Name"), "0002BB");
    EXPECT_EQ(TextOf(content.at("0003CC"), "Name"), fields.empty() ? "0003CC" : "Title3");
  }
}

TEST(ProviderP2, MergesTheClipsOfAShotUnderItsTopClip) {
  const TempTree tree;
  MakeP2Card(tree, "card");
  for (const P2Clip& clip : P2Shot({"0002BB", "0001AA", "0003CC"}, "SHOT")) {
    AddP2Clip(tree, "card", clip);
  }
  AddP2Clip(tree, "card", {.id = "0009ZZ"});
  SetModTime(tree.Path("card/CONTENTS/CLIP/0003CC.XML"), 2'000'000'000);
  tree.File("card/CONTENTS/AUDIO/0002BB00.MXF");
  tree.File("card/CONTENTS/AUDIO/0002BB01.MXF");
  tree.File("card/CONTENTS/AUDIO/0002BB.MXF");
  tree.File("card/CONTENTS/VOICE/0002BB00.WAV");
  tree.File("card/CONTENTS/PROXY/0001AA.MP4");
  tree.File("card/CONTENTS/other.txt");

  FieldNameSet fields = kWithExtraPath;
  fields.insert("duration");
  const ContentMap content = List(tree, "card", fields);
  EXPECT_THAT(KeysOf(content), ElementsAre("0002BB", "0009ZZ"));
  EXPECT_EQ(TextOf(content.at("0002BB"), "duration"), "00:00:12:00");
  EXPECT_THAT(
      ExtraPathsOf(content.at("0002BB"), tree.Path("card/CONTENTS")),
      ElementsAre("CLIP/0001AA.XML", "ICON/0001AA.BMP", "PROXY/0001AA.MP4", "VIDEO/0001AA.MXF",
                  "CLIP/0003CC.XML", "ICON/0003CC.BMP", "VIDEO/0003CC.MXF", "AUDIO/0002BB00.MXF",
                  "AUDIO/0002BB01.MXF", "CLIP/0002BB.XML", "ICON/0002BB.BMP", "AUDIO", "CLIP",
                  "ICON", "PROXY", "VIDEO", "VOICE"));

  // A single clip has its own duration, and its own essence isn't among the extra paths.
  const ContentMap one = kProvider.GetContent(tree.Path("card"), "0001AA", fields);
  EXPECT_THAT(KeysOf(one), ElementsAre("0001AA"));
  EXPECT_EQ(TextOf(one.at("0001AA"), "duration"), "00:00:04:00");
  const auto paths = ExtraPathsOf(one.at("0001AA"), tree.Path("card/CONTENTS"));
  EXPECT_THAT(paths, testing::Contains("VIDEO/0002BB.MXF"));
  EXPECT_THAT(paths, testing::Not(testing::Contains("VIDEO/0001AA.MXF")));
}

TEST(ProviderP2, RepresentsAShotByItsNewestClipUntilTheTopClipIsFound) {
  const TempTree tree;
  MakeP2Card(tree, "1");
  MakeP2Card(tree, "2");
  const auto shot = P2Shot({"0001AA", "0002BB", "0003CC"}, "SHOT");
  AddP2Clip(tree, "1", shot[1]);
  AddP2Clip(tree, "1", shot[2]);
  SetModTime(tree.Path("1/CONTENTS/CLIP/0002BB.XML"), 1'500'000'002);
  const std::string last = tree.Path("1/CONTENTS/CLIP/0003CC.XML");
  SetModTime(last, 1'500'000'003);
  EXPECT_THAT(KeysOf(List(tree, "1", {})), ElementsAre("0003CC"));
  SetModTime(last, 1'500'000'002);
  EXPECT_THAT(KeysOf(List(tree, "1", {})), ElementsAre("0002BB")) << "same age: the first in order";
  SetModTime(last, 1'500'000'001);
  EXPECT_THAT(KeysOf(List(tree, "1", {})), ElementsAre("0002BB"));

  // The top clip, on another card, becomes primary; the entry is a clip of the browsed card.
  AddP2Clip(tree, "2", shot[0]);
  const ContentMap content = List(tree, "1", {"duration", "ExtraPath"});
  EXPECT_THAT(KeysOf(content), ElementsAre("0003CC"));
  EXPECT_EQ(TextOf(content.at("0003CC"), "Path"), tree.Path("1/CONTENTS/VIDEO/0003CC.MXF"));
  EXPECT_EQ(TextOf(content.at("0003CC"), "duration"), "00:00:12:00");
  EXPECT_THAT(ExtraPathsOf(content.at("0003CC"), tree.Root()),
              testing::IsSupersetOf({"1/CONTENTS/VIDEO/0002BB.MXF", "2/CONTENTS/VIDEO/0001AA.MXF",
                                     "2/CONTENTS/CLIP", "1/CONTENTS/CLIP"}));
  EXPECT_THAT(KeysOf(List(tree, "2", {})), ElementsAre("0001AA"));
}

TEST(ProviderP2, IgnoresCopiesOfTheCard) {
  const TempTree tree;
  const auto shot = P2Shot({"0001AA", "0002BB", "0003CC"}, "SHOT");
  for (const char* card : {"1", "2", "copy of 1"}) MakeP2Card(tree, card);
  AddP2Clip(tree, "1", shot[0]);
  AddP2Clip(tree, "copy of 1", shot[0]);
  AddP2Clip(tree, "2", shot[1]);
  // The third clip is missing, so all siblings are visited.
  const ContentMap content = List(tree, "1", {"duration", "ExtraPath"});
  EXPECT_THAT(KeysOf(content), ElementsAre("0001AA"));
  EXPECT_EQ(TextOf(content.at("0001AA"), "duration"), "00:00:08:00");
  EXPECT_THAT(ExtraPathsOf(content.at("0001AA"), tree.Root()),
              testing::Not(testing::Contains(testing::StartsWith("copy"))));
}

TEST(ProviderP2, FindsClipsAndIconsOnNeighbouringCards) {
  const TempTree tree;
  MakeP2Card(tree, "1");
  MakeP2Card(tree, "2");
  AddP2Clip(tree, "2", {.id = "0001AA"});
  tree.Folder("3/CONTENTS");
  const ContentMap one = kProvider.GetContent(tree.Path("1"), "0001AA", kWithExtraPath);
  ASSERT_THAT(KeysOf(one), ElementsAre("0001AA"));
  EXPECT_EQ(TextOf(one.at("0001AA"), "Path"), tree.Path("2/CONTENTS/VIDEO/0001AA.MXF"));
  EXPECT_FALSE(one.at("0001AA").contains("ExtraPath"));  // not a clip of this card

  const OwnedBitplate icon(kProvider.GetThumbnail(tree.Path("1"), "0001AA", 8, 6, nullptr));
  ASSERT_NE(icon, nullptr);
  EXPECT_EQ(bitplateGetHeight(icon.get()), 6);
  EXPECT_THAT(kProvider.GetContent(tree.Path("1"), "0002BB", {}), IsEmpty());
  EXPECT_EQ(kProvider.GetThumbnail(tree.Path("1"), "0002BB", 8, 6, nullptr), nullptr);
  tree.File("1/CONTENTS/ICON/0003CC.BMP", "no picture");
  EXPECT_EQ(kProvider.GetThumbnail(tree.Path("1"), "0003CC", 8, 6, nullptr), nullptr);
}

TEST(ProviderP2, FindsListedClipsWithLowerCaseExtension) {
  const TempTree tree;
  MakeP2Card(tree, "card");
  AddP2Clip(tree, "card", {.id = "0001AA"});
  const std::string clips = tree.Path("card/CONTENTS/CLIP/");
  std::filesystem::rename(clips + "0001AA.XML", clips + "0001AA.xml");
  const FieldNameSet fields{kPathField, kExtraPathField};
  const ContentMap listed = kProvider.GetContent(tree.Path("card"), fields, nullptr);
  ASSERT_EQ(listed.size(), 1u);
  const ContentMap one = kProvider.GetContent(tree.Path("card"), "0001AA", fields);
  ASSERT_EQ(one.size(), 1u);
  EXPECT_EQ(TextOf(one.at("0001AA"), kPathField), TextOf(listed.at("0001AA"), kPathField));
  EXPECT_EQ(ExtraPathsOf(one.at("0001AA"), tree.Root()),
            ExtraPathsOf(listed.at("0001AA"), tree.Root()));
}

TEST(ProviderP2, RejectsKeysThatLeadOffTheCard) {
  const TempTree tree;
  MakeP2Card(tree, "1");
  MakeP2Card(tree, "2");
  AddP2Clip(tree, "2", {.id = "0001AA"});
  const std::string key = "../../../2/CONTENTS/CLIP/0001AA";
  EXPECT_THAT(kProvider.GetContent(tree.Path("1"), key, {}), IsEmpty());
  EXPECT_EQ(kProvider.GetThumbnail(tree.Path("1"), key, 8, 6, nullptr), nullptr);
  EXPECT_THAT(kProvider.GetContent(tree.Path("1"), "", {}), IsEmpty());
}

TEST(ProviderP2, SearchesOtherVolumesFromTheRootOfOne) {
  const TempTree tree;
  const RealMount first = RealMount::Memory(tree.Folder("mnt1"));
  const RealMount second = RealMount::Memory(tree.Folder("mnt2"));
  if (!first || !second) GTEST_SKIP() << "may not mount file systems here";
  const auto shot = P2Shot({"0001AA", "0002BB"}, "SHOT");
  for (const char* card : {"mnt1", "mnt2", "folder"}) MakeP2Card(tree, card);
  AddP2Clip(tree, "mnt1", shot[0]);
  AddP2Clip(tree, "folder", shot[1]);
  const FieldNameSet fields{"duration"};
  // A folder next to the mount point isn't a volume.
  EXPECT_EQ(TextOf(List(tree, "mnt1", fields).at("0001AA"), "duration"), "00:00:04:00");
  AddP2Clip(tree, "mnt2", shot[1]);
  EXPECT_EQ(TextOf(List(tree, "mnt1", fields).at("0001AA"), "duration"), "00:00:08:00");
}

// Damaged or invalid files affect only their own entries and fields.
TEST(ProviderP2, ListsTheValidClipsOfADamagedCard) {
  const TempTree tree;
  MakeP2Card(tree, "card");
  AddP2Clip(tree, "card", {.id = "0001AA", .userName = "Good"});
  const std::string valid = P2ClipXml({.id = "0002BB"});
  const auto add = [&](const std::string& id, std::string_view xml) {
    AddP2Clip(tree, "card", {.id = id});
    tree.File("card/CONTENTS/CLIP/" + id + ".XML", xml);
  };
  add("0002CC", std::string_view(valid).substr(0, valid.size() / 2));
  add("0003EE", "");
  add("0004HH", "");
  fs::resize_file(tree.Path("card/CONTENTS/CLIP/0004HH.XML"), 100 << 20);
  AddP2Clip(tree, "card", {.id = "0005FF"});
  fs::remove(tree.Path("card/CONTENTS/CLIP/0005FF.XML"));
  ASSERT_EQ(mkfifo(tree.Path("card/CONTENTS/CLIP/0005FF.XML").c_str(), 0600), 0);
  AddP2Clip(tree, "card",
            {.id = "0006SS",
             .shotId = "SELF",
             .top = P2GlobalId("0006SS"),
             .previous = P2GlobalId("0006SS"),
             .next = P2GlobalId("0006SS")});
  // Two clips that follow each other.
  AddP2Clip(tree, "card",
            {.id = "0007RR",
             .shotId = "RING",
             .top = P2GlobalId("0008RR"),
             .previous = P2GlobalId("0008RR"),
             .next = P2GlobalId("0008RR")});
  AddP2Clip(tree, "card",
            {.id = "0008RR",
             .shotId = "RING",
             .top = P2GlobalId("0007RR"),
             .previous = P2GlobalId("0007RR"),
             .next = P2GlobalId("0007RR")});
  for (const FieldNameSet& fields : {FieldNameSet{"Name"}, kWithExtraPath}) {
    const ContentMap content = List(tree, "card", fields);
    EXPECT_THAT(KeysOf(content),
                testing::IsSupersetOf({"0001AA", "0002CC", "0003EE", "0004HH", "0006SS"}));
    EXPECT_EQ(content.size(), 6u);
    EXPECT_EQ(TextOf(content.at("0001AA"), "Name"), "Good");
    EXPECT_EQ(TextOf(content.at("0002CC"), "Name"), "0002CC");
    EXPECT_EQ(TextOf(content.at("0004HH"), "Path"), tree.Path("card/CONTENTS/VIDEO/0004HH.MXF"));
  }
}

TEST(ProviderP2, ListsClipsWithTheSameIdButNoShot) {
  const TempTree tree;
  MakeP2Card(tree, "card");
  AddP2Clip(tree, "card", {.id = "0001AA", .globalId = "SAME"});
  AddP2Clip(tree, "card", {.id = "0002BB", .globalId = "SAME"});
  EXPECT_EQ(List(tree, "card", {}).size(), 2u);
}

TEST(ProviderP2, SkipsUnreadableSiblings) {
  const TempTree tree;
  MakeP2Card(tree, "card");
  const auto shot = P2Shot({"0001AA", "0002BB"}, "SHOT");
  AddP2Clip(tree, "card", shot[0]);
  for (int i = 0; i < 300; ++i) tree.Folder("sibling" + std::to_string(i));
  tree.Folder("closed/CONTENTS/CLIP");
  ASSERT_EQ(chmod(tree.Path("closed").c_str(), 0), 0);
  fs::create_directory_symlink(tree.Path("loop"), tree.Path("loop"));
  MakeP2Card(tree, "z");
  AddP2Clip(tree, "z", shot[1]);
  EXPECT_EQ(TextOf(List(tree, "card", {"duration"}).at("0001AA"), "duration"), "00:00:08:00");
  chmod(tree.Path("closed").c_str(), 0700);
}

}  // namespace
