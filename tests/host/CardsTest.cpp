// SPDX-License-Identifier: MIT
// The commands that find cards: sorvik cards, and sorvik without a command.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "support/Cards.h"
#include "support/ModernCards.h"
#include "support/Program.h"
#include "support/TempTree.h"

namespace sorvik_test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class Cards : public testing::Test {
 protected:
  void SetUp() override {
    MakeXDCAMEXCard(tree_, "sd/PRIVATE/JVC", {{"A_01"}});
    MakeP2Card(tree_, "sd");
    AddP2Clip(tree_, "sd", {.id = "0001AB"});
    tree_.File("plain/a.txt");
  }

  const TempTree tree_;
};

TEST_F(Cards, PrintsRootsOnceInEachForm) {
  const std::string sd = tree_.Path("sd");
  const std::string jvc = tree_.Path("sd/PRIVATE/JVC");
  const ProgramResult text = RunSorvik({"cards", sd, jvc + "/BPAV"});
  EXPECT_EQ(text.output, sd + "\n" + jvc + "\n");
  EXPECT_EQ(text.exitCode, 0);
  EXPECT_EQ(RunSorvik({"cards", "-0", sd}).output,
            sd + std::string(1, '\0') + jvc + std::string(1, '\0'));
  const std::string json = RunSorvik({"cards", "--json", jvc}).output;
  EXPECT_EQ(nlohmann::json::parse(json),
            nlohmann::json({{"path", jvc},
                            {"provider", "com.halvane.Merisk.ProviderXDCAMEX"},
                            {"name", "XDCAM-EX"},
                            {"score", 100}}));
}

TEST_F(Cards, FailsForEachPathWithoutCards) {
  const ProgramResult result =
      RunSorvik({"cards", tree_.Path("plain"), tree_.Path("gone"), tree_.Path("sd")});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "sorvik: " + tree_.Path("plain") + ": no card found\nsorvik: " +
                               tree_.Path("gone") + ": No such file or directory\n");
  EXPECT_THAT(result.output, HasSubstr(tree_.Path("sd") + "\n"));
}

TEST_F(Cards, WithoutACommandShowsAllNearbyCards) {
  const ProgramResult both = RunSorvik({tree_.Path("sd")});
  EXPECT_THAT(both.output, HasSubstr(tree_.Path("sd") + " (Panasonic P2)\n"));
  EXPECT_THAT(both.output, HasSubstr(tree_.Path("sd/PRIVATE/JVC") + " (XDCAM-EX)\n"));
  const ProgramResult one = RunSorvik({tree_.Path("sd/PRIVATE/JVC")});
  EXPECT_THAT(one.output, Not(HasSubstr("(XDCAM-EX)"))) << "no heading for the path itself";
  const ProgramResult json = RunSorvik({"--json", tree_.Path("sd")});
  EXPECT_EQ(std::count(json.output.begin(), json.output.end(), '\n'), 2);
  EXPECT_THAT(RunSorvik({tree_.Path("plain")}).output, HasSubstr("a.txt"));
}

TEST_F(Cards, CheckAndFilesOfAPlainFolderTakeTheCardsNearby) {
  MakeXAVCCard(tree_, "x/PRIVATE/M4ROOT", XAVCLayout::kM4Root, {{.name = "C0001"}});
  MakeXAVCCard(tree_, "x/PRIVATE/XDROOT", XAVCLayout::kXDRoot,
               {{.name = "C0001", .essence = false}});
  tree_.File("x/PRIVATE/M4ROOT/GENERAL/LUT/a.cube", "lut");
  const std::string root = tree_.Path("x/PRIVATE/");
  const ProgramResult check = RunSorvik({"check", "--quick", "--json", tree_.Path("x")});
  EXPECT_EQ(check.exitCode, 1);
  const auto json = nlohmann::json::parse(check.output);
  ASSERT_EQ(json.size(), 2u);
  EXPECT_EQ(json[0]["path"], root + "M4ROOT");
  EXPECT_EQ(json[0]["findings"].size(), 0u);
  EXPECT_EQ(json[1]["findings"][0]["path"], root + "XDROOT/Clip/C0001.MXF");
  const std::string files = RunSorvik({"files", tree_.Path("x")}).output;
  for (const char* file :
       {"M4ROOT/CLIP/C0001.MP4", "M4ROOT/GENERAL/LUT/a.cube", "M4ROOT/STATUS.BIN",
        "XDROOT/Clip/C0001M01.XML", "XDROOT/Sub/C0001S03.MP4"}) {
    EXPECT_THAT(files, HasSubstr(root + file + "\n"));
  }
  EXPECT_EQ(RunSorvik({"check", tree_.Path("plain")}).exitCode, 1);
  EXPECT_EQ(RunSorvik({"files", tree_.Path("plain")}).output, tree_.Path("plain/a.txt") + "\n");
}

TEST_F(Cards, SheetsOfAPlainFolderTakeTheCardsNearby) {
  MakeXAVCCard(tree_, "x/PRIVATE/M4ROOT", XAVCLayout::kM4Root, {{.name = "C0001"}});
  MakeXDCAMEXCard(tree_, "x/PRIVATE/JVC", {{"A_01"}});
  const ProgramResult sheet = RunSorvik({"sheet", tree_.Path("x"), "-o", "-"});
  EXPECT_EQ(sheet.exitCode, 0) << sheet.errors;
  EXPECT_THAT(sheet.output, HasSubstr("<h2>C0001</h2>"));
  EXPECT_THAT(sheet.output, HasSubstr("<h2>A_01</h2>"));
  EXPECT_THAT(sheet.output, HasSubstr("<span id=\"count\">2</span>"));
}

TEST_F(Cards, CheckAndFilesCoverTheRestOfTheMedium) {
  MakeXAVCCard(tree_, "x/PRIVATE/M4ROOT", XAVCLayout::kM4Root, {{.name = "C0001"}});
  const std::string database = tree_.File("x/Private/Database/DATABASE.BIN", "12345");
  const std::string movie = tree_.File("x/PRIVATE/JVC/CQAV/ABCD0001.MOV", "movie");
  const std::string note = tree_.File("x/note.txt", "note");
  const std::string files = RunSorvik({"files", tree_.Path("x")}).output;
  EXPECT_THAT(files, HasSubstr(database + "\n"));
  EXPECT_THAT(files, HasSubstr(movie + "\n"));
  EXPECT_THAT(files, Not(HasSubstr(note)));
  const auto reports = nlohmann::json::parse(
      RunSorvik({"check", "--quick", "--json", "--files", tree_.Path("x")}).output);
  ASSERT_EQ(reports.size(), 2u);
  const auto& medium = reports[1];
  EXPECT_EQ(medium["path"], tree_.Path("x"));
  EXPECT_EQ(medium["bytes"], 10);
  ASSERT_EQ(medium["files"].size(), 3u) << medium;
  for (const auto& file : medium["files"]) {
    EXPECT_EQ(file["role"], file["path"] == note ? "foreign" : "structure") << file;
  }
}

TEST_F(Cards, CheckReportsMediaThatIsALinkWithoutATarget) {
  MakeXAVCCard(tree_, "x/M4ROOT", XAVCLayout::kM4Root, {{.name = "C0001"}});
  const std::string root = tree_.Path("x/M4ROOT");
  EXPECT_EQ(RunSorvik({"check", "--quick", root}).exitCode, 0);
  std::filesystem::create_symlink("missing", root + "/CLIP/C0002.MP4");
  const ProgramResult check = RunSorvik({"check", "--quick", root});
  EXPECT_EQ(check.exitCode, 1);
  EXPECT_THAT(check.output, HasSubstr("unreadable essence: CLIP/C0002.MP4 (not a regular file)"));
}

// A card below the root of another one is no foreign part of it.
TEST_F(Cards, CheckAndFilesCoverCardsBelowACard) {
  const std::string sd = tree_.Path("sd");
  const auto reports = nlohmann::json::parse(RunSorvik({"check", "--json", "--files", sd}).output);
  ASSERT_EQ(reports.size(), 2u);
  EXPECT_EQ(reports[1]["path"], sd + "/PRIVATE/JVC");
  for (const auto& file : reports[0]["files"]) EXPECT_NE(file["role"], "foreign") << file;
  const ProgramResult files = RunSorvik({"files", sd});
  EXPECT_THAT(files.output, HasSubstr(sd + "/CONTENTS/CLIP/0001AB.XML\n"));
  EXPECT_THAT(files.output, HasSubstr(sd + "/PRIVATE/JVC/BPAV/CLPR/A_01/A_01.MP4\n"));
  EXPECT_THAT(RunSorvik({"files", sd, "--provider", "p2"}).output, Not(HasSubstr("JVC")));
}

TEST_F(Cards, OwnerAndFilesGroupLooseClips) {
  for (const char* file : {"GX010001.MP4", "GX020001.MP4", "GL010001.LRV", "GX010002.MP4"}) {
    tree_.File(std::string("plain/") + file, "x");
  }
  const std::string plain = tree_.Path("plain/");
  const auto owner =
      nlohmann::json::parse(RunSorvik({"owner", "--json", plain + "GL010001.LRV"}).output);
  EXPECT_EQ(owner["key"], plain + "GX010001.MP4");
  EXPECT_EQ(owner["path"], tree_.Path("plain"));
  EXPECT_EQ(owner["fields"]["ProxyPath"], plain + "GL010001.LRV");
  EXPECT_EQ(owner["fields"]["ExtraPath"].size(), 2u);
  const std::string files =
      plain + "GX010001.MP4\n" + plain + "GX020001.MP4\n" + plain + "GL010001.LRV\n";
  EXPECT_EQ(RunSorvik({"files", plain + "GX020001.MP4"}).output, files);
  EXPECT_THAT(RunSorvik({"files", plain, "GX020001.MP4"}).output,
              HasSubstr(plain + "GL010001.LRV\n"));
  EXPECT_EQ(RunSorvik({"owner", "--clips-only", "--json", plain + "GL010001.LRV"})
                .output.find("GX010001"),
            std::string::npos);
  EXPECT_EQ(RunSorvik({"files", tree_.Path("sd/CONTENTS/VIDEO/0001AB.MXF")}).exitCode, 1)
      << "a card owns it";
}

TEST_F(Cards, LsIsLiteralAndReportsNearbyCards) {
  const std::string folder = tree_.Path("sd/PRIVATE");
  const ProgramResult result = RunSorvik({"ls", folder});
  EXPECT_NE(result.output.find("\nJVC  "), std::string::npos) << result.output;
  EXPECT_EQ(result.errors,
            "sorvik: " + folder + ": a plain folder; card nearby: " + folder + "/JVC\n");
  EXPECT_EQ(RunSorvik({"ls", tree_.Path("plain")}).errors, "");
}

}  // namespace
}  // namespace sorvik_test
