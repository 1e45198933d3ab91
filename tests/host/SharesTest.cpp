// SPDX-License-Identifier: MIT
// Links to network shares: the program doesn't block on a share that doesn't answer, and the facts
// of files on a share that does are right.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "support/Cards.h"
#include "support/Program.h"
#include "support/TestShare.h"

namespace {

namespace fs = std::filesystem;
using namespace sorvik_test;
using testing::HasSubstr;
using testing::Not;

// A folder with links to a share: directly, through another link, from a shortcut.
class LinksToShare : public ShareTest {
 protected:
  void SetUp() override {
    if (!share_) GTEST_SKIP() << share_.Reason();
    SkipLeakCheckOfProgram();
    tree_.File("server/clip.mov", "0123456789");
    tree_.Folder("server/sub");
    tree_.File("folder/local.mov", "abc");
    folder_ = tree_.Path("folder");
    fs::create_directory_symlink(tree_.Path("share"), tree_.Path("nas"));
    fs::create_directory_symlink("../nas", folder_ + "/link");
    fs::create_directory_symlink(tree_.Path("share/sub"), folder_ + "/sub");
    fs::create_symlink("link/clip.mov", folder_ + "/clip.mov");
    tree_.File("folder/x.desktop", "[Desktop Entry]\nType=Link\nURL=file://" + folder_ + "/sub/y");
  }

  // Runs the program. Fails if it blocks or waits again and again.
  ProgramResult Run(const std::vector<std::string>& arguments) {
    constexpr long long kMaxMilliseconds = 5000;
    ProgramResult result;
    const auto time = share_.Milliseconds([&] { result = RunSorvik(arguments); });
    std::string command;
    for (const std::string& argument : arguments) command += argument + ' ';
    EXPECT_GE(time, 0) << command << "blocks on the share";
    EXPECT_LT(time, kMaxMilliseconds) << command;
    return result;
  }

  // Runs the program until its output has the text `expected`: on a busy machine a share can take
  // longer than the program waits, and then its facts are missing. Facts are never wrong.
  std::string OutputWith(const std::string& expected, const std::vector<std::string>& arguments) {
    constexpr int kMaxRuns = 20;
    std::string output;
    for (int run = 0; run < kMaxRuns; ++run) {
      output = Run(arguments).output;
      if (output.find(expected) != std::string::npos) break;
    }
    EXPECT_THAT(output, HasSubstr(expected));
    return output;
  }

  std::string folder_;
};

TEST_F(LinksToShare, DoNotBlockWhileTheShareIsUnreachable) {
  share_.Stop();
  EXPECT_EQ(Run({"who", folder_}).exitCode, 0);
  EXPECT_EQ(Run({"ls", folder_, "--all", "--json"}).exitCode, 0);
  EXPECT_THAT(Run({"owner", folder_ + "/local.mov"}).errors, HasSubstr("local.mov"));
  Run({"check", folder_});
  Run({"thumb", folder_, "link", "-o", tree_.Path("out.png")});
  Run({"thumb", "--folder", folder_, "-o", tree_.Path("folder.png")});
  EXPECT_EQ(Run({"sheet", folder_, "-o", tree_.Path("sheet.html")}).exitCode, 0);
  const ProgramResult files = Run({"files", folder_});
  EXPECT_EQ(files.exitCode, 1) << "files on the share may be missing in the list";
  EXPECT_THAT(files.output, HasSubstr(folder_ + "/local.mov\n"));
  EXPECT_THAT(files.errors, HasSubstr(folder_ + "/clip.mov: cannot access (the network share"));
}

// The media of a card can be links to files on a share.
TEST_F(LinksToShare, DoNotBlockTheCheckOfACard) {
  MakeP2Card(tree_, "card");
  AddP2Clip(tree_, "card", {.id = "0001AA"});
  const std::string video = tree_.Path("card/CONTENTS/VIDEO/0001AA.MXF");
  fs::rename(video, tree_.Path("server/0001AA.MXF"));
  fs::create_symlink(tree_.Path("share/0001AA.MXF"), video);
  OutputWith(" 2 errors", {"check", tree_.Path("card")});  // it has no sound files
  share_.Stop();
  const ProgramResult silent = Run({"check", tree_.Path("card")});
  EXPECT_EQ(silent.exitCode, 1) << "a card isn't complete if its media can't be read";
  EXPECT_THAT(silent.output, HasSubstr("missing essence: CONTENTS/VIDEO/0001AA.MXF"));
}

TEST_F(LinksToShare, KeepOnlyKnownFactsWhileTheShareIsUnreachable) {
  share_.Stop();
  const std::string listing = Run({"ls", folder_, "--json", "--fields", "06,26,Path"}).output;
  EXPECT_THAT(listing, HasSubstr("\"sub\":{\"06\":\"\",\"26\":null")) << "unknown size";
  EXPECT_THAT(listing, HasSubstr("\"Path\":\"" + folder_ + "/sub/y\"")) << "shortcut";
}

TEST_F(LinksToShare, AreBrowsableOnlyIfTheyLeadToAMountPoint) {
  share_.Stop();
  const std::string places = Run({"places", folder_, "--json"}).output;
  EXPECT_THAT(places, HasSubstr("\"link\""));
  EXPECT_THAT(places, Not(HasSubstr("\"sub\"")));
  EXPECT_THAT(Run({"places", tree_.Root(), "--json"}).output, HasSubstr("\"share\""));
  EXPECT_THAT(Run({"places", "volumes:", "--json"}).output, HasSubstr(tree_.Path("share")));
}

TEST_F(LinksToShare, HaveTheFactsOfTheirTargets) {
  const std::string facts = "{\"06\":\"\",\"09\":\"\",\"14\":\"\",\"26\":{\"bytes\":10}";
  const std::vector<std::string> list = {"ls", folder_, "--json", "--fields", "06,09,14,26"};
  OutputWith("\"sub\":{\"06\":\"D\",\"09\":\"\",\"14\":\"\",\"26\":{\"bytes\":0}", list);
  OutputWith("\"link\":{\"06\":\"D\"", list);
  OutputWith("\"clip.mov\":" + facts, list);
  OutputWith("\"sub\"", {"places", folder_, "--json"});
}

TEST_F(LinksToShare, FilesWithoutReportedBlocksAreNormal) {
  const std::string listing =
      Run({"ls", tree_.Path("share"), "--json", "--fields", "09,14"}).output;
  EXPECT_THAT(listing, HasSubstr("\"clip.mov\":{\"09\":\"Normal\",\"14\":\"\"}"));
}

TEST_F(LinksToShare, CanContainTheClipsOfACard) {
  MakeP2Card(tree_, "server/card");
  AddP2Clip(tree_, "server/card", P2Shot({"0001AA"}, "SHOT").front());
  fs::create_directory(folder_ + "/card");
  fs::create_directory_symlink("../../share/card/CONTENTS", folder_ + "/card/CONTENTS");
  OutputWith("0001AA", {"ls", folder_ + "/card"});
  share_.Stop();
  EXPECT_THAT(Run({"ls", folder_ + "/card"}).output, Not(HasSubstr("0001AA")));
}

}  // namespace
