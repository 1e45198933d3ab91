// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "providers/structures/ProviderSonyHDV.h"
#include "support/TempTree.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using sorvik_test::ExtraPathsOf;
using sorvik_test::KeysOf;
using sorvik_test::TempTree;
using sorvik_test::TextOf;
using Names = std::vector<std::string>;

const std::string kClips = "VIDEO/HVR/";
const std::string kFirst = "00_0012_2014-01-31_101530";
const std::string kSecond = "00_0012_2014-01-31_103000";
const std::string kThird = "00_0013_2014-01-31_104500";

TEST(SonyHDV, ScoresByFileNames) {
  const ProviderSonyHDV provider;
  struct Case {
    std::vector<std::string> files;
    int score;
  };
  for (const Case& c :
       {Case{{}, 100}, Case{{kFirst + ".M2T", kFirst + ".IDX"}, 100},
        Case{{kFirst + ".AVI", kFirst + ".XMP", kSecond + ".DV"}, 100}, Case{{kFirst + ".m2t"}, 40},
        Case{{"0_0012_2014-01-31_101530.M2T"}, 40}, Case{{kFirst + ".M2T", "TRACKS.DAT"}, 40},
        Case{{".hidden"}, 100}, Case{{kFirst + "xM2T"}, 40}, Case{{kFirst + "."}, 40}}) {
    const TempTree tree;
    tree.Folder(kClips);
    for (const std::string& file : c.files) tree.File(kClips + file);
    EXPECT_EQ(provider.CanProvideFor(tree.Root()), c.score) << (c.files.empty() ? "" : c.files[0]);
    EXPECT_EQ(provider.CanProvideFor(tree.Root() + "/"), 0);
  }
  const TempTree other;
  other.File("VIDEO/x");
  EXPECT_EQ(provider.CanProvideFor(other.Root()), 0);
}

TEST(SonyHDV, DistinguishesFilesOfOneRecording) {
  const TempTree tree;
  for (const std::string& name : {kFirst, kSecond, kThird}) tree.File(kClips + name + ".M2T");
  tree.File(kClips + kFirst + ".IDX");
  tree.File(kClips + kSecond + ".XMP");
  for (const std::string& pipe : {kThird + ".IDX", kThird + ".XMP"}) {
    ASSERT_EQ(mkfifo(tree.Path(kClips + pipe).c_str(), 0600), 0);
  }
  // The same number, but not adjacent.
  const std::string apart = "01_0012_2014-02-01_090000.AVI";
  tree.File(kClips + apart);
  const ProviderSonyHDV provider;
  const ContentMap content = provider.GetContent(tree.Root(), {kNameField}, nullptr);
  EXPECT_EQ(KeysOf(content), (Names{kFirst + ".M2T", kSecond + ".M2T", kThird + ".M2T", apart}));
  const auto nameOf = [&](const std::string& key) { return TextOf(content.at(key), kNameField); };
  EXPECT_EQ(nameOf(kFirst + ".M2T"), "0012-01");
  EXPECT_EQ(nameOf(kSecond + ".M2T"), "0012-02");
  EXPECT_EQ(nameOf(kThird + ".M2T"), "0013");
  EXPECT_EQ(nameOf(apart), "0012");
  // Extra paths are always set. All files of a run share the index of the first one.
  const std::string folder = tree.Path("VIDEO/HVR");
  EXPECT_EQ(ExtraPathsOf(content.at(kFirst + ".M2T"), folder),
            (Names{kFirst + ".IDX", "TRACKS.DAT"}));
  EXPECT_EQ(ExtraPathsOf(content.at(kSecond + ".M2T"), folder),
            (Names{kFirst + ".IDX", "TRACKS.DAT", kSecond + ".XMP"}));
  EXPECT_EQ(ExtraPathsOf(content.at(kThird + ".M2T"), folder), Names{"TRACKS.DAT"});
  for (const auto& [key, fields] : content) {
    const ContentMap one = provider.GetContent(tree.Root(), key, {kNameField});
    EXPECT_EQ(one.at(key), fields) << key;
  }
}

TEST(SonyHDV, AcceptsUnlistedKeys) {
  const TempTree tree;
  tree.File(kClips + kFirst + ".M2T");
  const ProviderSonyHDV provider;
  const FieldValueMap fields =
      provider.GetContent(tree.Root(), "00_0077_x.M2T", {kNameField}).at("00_0077_x.M2T");
  EXPECT_EQ(TextOf(fields, kNameField), "0077");
  EXPECT_EQ(ExtraPathsOf(fields, tree.Path("VIDEO/HVR")), Names{"TRACKS.DAT"});
  EXPECT_EQ(TextOf(provider.GetContent(tree.Root(), "x", {}).at("x"), kNameField), "");
  EXPECT_TRUE(provider.GetContent(tree.Path("VIDEO"), kFirst + ".M2T", {}).empty());
  tree.File(kClips + "Tracks.dat");  // as some recorders write it
  EXPECT_EQ(ExtraPathsOf(provider.GetContent(tree.Root(), {}, nullptr).at(kFirst + ".M2T"),
                         tree.Path("VIDEO/HVR")),
            Names{"Tracks.dat"});
  for (const char* noName : {"", ".", "..", "../HVR/x"}) {
    EXPECT_TRUE(provider.GetContent(tree.Root(), noName, {}).empty()) << noName;
  }
}

TEST(SonyHDV, NumbersLongRunsAndReturnsNothingWhenAborted) {
  const TempTree tree;
  for (int i = 0; i < 120; ++i) {
    char time[8];
    std::snprintf(time, sizeof(time), "%06d", i);
    tree.File(kClips + "00_0001_2014-01-31_" + time + ".M2T");
  }
  const ProviderSonyHDV provider;
  const ContentMap content = provider.GetContent(tree.Root(), {}, nullptr);
  EXPECT_EQ(TextOf(content.at("00_0001_2014-01-31_000008.M2T"), kNameField), "0001-09");
  EXPECT_EQ(TextOf(content.at("00_0001_2014-01-31_000009.M2T"), kNameField), "0001-10");
  EXPECT_EQ(TextOf(content.at("00_0001_2014-01-31_000119.M2T"), kNameField), "0001-120");
  const Hestra::InterfaceRef<ProviderListRequest, Hestra::IThreadedQueueRequest> request(
      new ProviderListRequest("", ""));
  request->Abort();
  EXPECT_TRUE(provider.GetContent(tree.Root(), {}, request.Get()).empty());
}

}  // namespace
