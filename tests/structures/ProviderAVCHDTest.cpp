// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "foundation/CallScope.h"
#include "providers/structures/ProviderAVCHD.h"
#include "support/AvchdCard.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using sorvik_test::AvchdCard;
using sorvik_test::ExtraPathsOf;
using sorvik_test::KeysOf;
using sorvik_test::kLongNames;
using sorvik_test::TempTree;
using sorvik_test::TextOf;
using testing::ElementsAre;
using testing::IsEmpty;

const FieldNameSet kPaths = {kNameField, kPathField, kExtraPathField};

int Score(const std::string& path) { return ProviderAVCHD().CanProvideFor(path); }
ContentMap List(const std::string& path, const FieldNameSet& fields = kPaths) {
  return ProviderAVCHD().GetContent(path, fields, nullptr);
}
ContentMap Entry(const std::string& path, const std::string& key) {
  return ProviderAVCHD().GetContent(path, key, kPaths);
}

std::string Numbered(int number) {
  char text[24];
  std::snprintf(text, sizeof text, "%05d", number);
  return text;
}

TEST(AVCHDRecognition, RequiresTheCompleteStructure) {
  const TempTree tree;
  const AvchdCard card(tree, "short");
  const AvchdCard disc(tree, "long", kLongNames);
  EXPECT_EQ(Score(card.Root()), 100);
  EXPECT_EQ(Score(disc.Root()), 100);
  for (const char* part : {"STREAM", "CLIPINF", "PLAYLIST", "index.bdm", "MOVIEOBJ.BDM"}) {
    const AvchdCard broken(tree, "broken");
    ASSERT_EQ(Score(broken.Root()), 100) << part;
    std::filesystem::remove(broken.Path(part));
    EXPECT_EQ(Score(broken.Root()), 0) << part;
    broken.File(part);
    // A file can't replace a folder. The two other names may be of any kind.
    EXPECT_EQ(Score(broken.Root()), std::string(part).find('.') == std::string::npos ? 0 : 100);
    std::filesystem::remove_all(broken.Root());
  }
}

TEST(AVCHDRecognition, AcceptsUpperCaseIndexNames) {
  const TempTree tree;
  const AvchdCard copy(tree, "", {".MTS", ".CPI", ".MPL", "INDEX.BDM", "MOVIEOBJ.BDM"});
  EXPECT_EQ(Score(copy.Root()), 100);
  copy.Clips({"00001"});
  copy.Playlist("00000", {{"00001"}});
  EXPECT_THAT(ExtraPathsOf(List(copy.Root()).at("00001.MTS"), copy.BDMV()),
              testing::Contains("INDEX.BDM"));
}

TEST(AVCHDRecognition, RequiresALongFormFolderPath) {
  const TempTree tree;
  const AvchdCard card(tree);
  for (const std::string& path :
       {std::string(), card.Root() + "/", card.Root().substr(1), "//?/" + card.Root().substr(1),
        card.Root() + std::string(1, '\0'), card.Path("index.bdm"), card.Path("STREAM"),
        tree.Path("missing"), std::string("/")}) {
    EXPECT_EQ(Score(path), 0) << path;
  }
}

TEST(AVCHDRecognition, Scores40WithForeignFilesInSTREAM) {
  const TempTree tree;
  const AvchdCard card(tree);
  for (const char* name :
       {"00001.MTS", "00002.mts", "12345.M2TS", "00003.m2ts", ".DS_Store", "folder/123.MTS"}) {
    card.File(std::string("STREAM/") + name);
  }
  EXPECT_EQ(Score(card.Root()), 100);
  for (const char* name : {"123.MTS", "12345.mp4", "thumbs.db", "00001.Mts", "00001.MTS2",
                           "000012.MTS", "00001.xmp"}) {
    const std::string file = card.File(std::string("STREAM/") + name);
    EXPECT_EQ(Score(card.Root()), 40) << name;
    std::filesystem::remove(file);
  }
}

TEST(AVCHDRecognition, RequiresTheWrapperToBeTheOnlyVisibleItem) {
  const TempTree tree;
  const AvchdCard card(tree, "card/AVCHD");
  const std::string root = tree.Path("card");
  EXPECT_EQ(Score(root), 100);
  EXPECT_EQ(Score(card.Root()), 100) << "the wrapper is a card, too";
  tree.File("card/.DS_Store");
  tree.File("card/._.Trashes");
  tree.Folder("card/.Spotlight-V100");
  EXPECT_EQ(Score(root), 100) << "hidden items don't count";
  card.File("STREAM/readme.txt");
  EXPECT_EQ(Score(root), 40);
  std::filesystem::remove(tree.File("card/autorun.inf"));
  EXPECT_EQ(Score(root), 40);
  tree.File("card/autorun.inf");
  EXPECT_EQ(Score(root), 0);
  std::filesystem::remove(tree.Path("card/autorun.inf"));
  tree.Folder("card/DCIM");
  EXPECT_EQ(Score(root), 0);
  const AvchdCard outer(tree, "card");
  EXPECT_EQ(Score(root), 100) << "a BDMV of its own takes precedence over the wrapper";
}

TEST(AVCHDListing, HasOneEntryPerShot) {
  const TempTree tree;
  const AvchdCard card(tree);
  card.Clips({"00000", "00001", "00002", "00003", "00005"});
  card.Playlist("00000", {{"00000", 1}, {"00001", 6}, {"00002", 6}, {"00003", 1}, {"00004", 1}});
  const ContentMap content = List(card.Root());
  EXPECT_THAT(KeysOf(content), ElementsAre("00000.MTS", "00003.MTS"))
      << "00004 has no stream file, 00005 is in no playlist";
  const FieldValueMap& shot = content.at("00000.MTS");
  EXPECT_EQ(TextOf(shot, kNameField), "00000");
  EXPECT_EQ(TextOf(shot, kPathField), card.Path("STREAM/00000.MTS"));
  EXPECT_EQ(shot.count(kProxyPathField), 0u);
  EXPECT_EQ(List(card.Root(), {kNameField}).at("00000.MTS").count(kExtraPathField), 0u);
}

TEST(AVCHDListing, ReadsMplAndMplsCaseSensitively) {
  const TempTree tree;
  const AvchdCard card(tree);
  card.Clips({"00001", "00002", "00003", "00004"});
  card.File("STREAM/clip1.MTS");
  card.Playlist("00000", {{"00002"}, {"00001"}, {"clip1"}});
  card.Playlist("any name", {{"00001"}, {"00002"}});
  card.File("PLAYLIST/00001.mpls", sorvik_test::PlaylistOf({{"00003"}}).str());
  for (const char* ignored : {"00002.mpl", "00003.MPLS", ".hidden.MPL", "00004.txt", "MPL"}) {
    card.File(std::string("PLAYLIST/") + ignored, sorvik_test::PlaylistOf({{"00004"}}).str());
  }
  card.File("PLAYLIST/00009.MPL", "MPLS0100, then damaged");
  EXPECT_THAT(KeysOf(List(card.Root())), ElementsAre("00001.MTS", "00002.MTS", "00003.MTS"));
}

TEST(AVCHDListing, FindsTheCardInsideAVCHD) {
  const TempTree tree;
  const AvchdCard card(tree, "card/AVCHD");
  card.Clips({"00001"});
  card.Playlist("00000", {{"00001"}});
  const ContentMap content = List(tree.Path("card"));
  EXPECT_EQ(TextOf(content.at("00001.MTS"), kPathField), card.Path("STREAM/00001.MTS"));
  EXPECT_THAT(KeysOf(Entry(tree.Path("card"), "00001.MTS")), ElementsAre("00001.MTS"));
}

TEST(AVCHDListing, IsEmptyWithoutAStructure) {
  const TempTree tree;
  EXPECT_THAT(List(tree.Root()), IsEmpty());
  EXPECT_THAT(Entry(tree.Root(), "00001.MTS"), IsEmpty());
  EXPECT_THAT(List(""), IsEmpty());
}

TEST(AVCHDListing, IsEmptyWhenAborted) {
  const TempTree tree;
  const AvchdCard card(tree);
  card.Clips({"00001"});
  card.Playlist("00000", {{"00001"}});
  const auto request = Hestra::InterfaceRef<ProviderContentRequest>(
      new ProviderContentRequest("test", {}, card.Root(), kPaths));
  EXPECT_EQ(ProviderAVCHD().GetContent(card.Root(), kPaths, &*request).size(), 1u);
  request->Abort();
  EXPECT_THAT(ProviderAVCHD().GetContent(card.Root(), kPaths, &*request), IsEmpty());
}

TEST(AVCHDListing, ReadsStreamPlaylistAndSidecar) {
  const auto stream = sorvik_test::ReadSample("avchd/M2TS.mts");
  const auto playlist = sorvik_test::ReadSample("avchd/ElishaAz-AVCHD-Converter/files/00002.MPL");
  if (!stream || !playlist) GTEST_SKIP() << "samples not found";
  const TempTree tree;
  const AvchdCard card(tree);
  card.File("STREAM/00010.MTS", *stream);
  card.File("STREAM/00013.MTS");
  card.File("PLAYLIST/00002.MPL", *playlist);
  card.File("STREAM/00010.xmp",
            R"(<x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF
               xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#"><rdf:Description
               xmlns:xmpDM="http://ns.adobe.com/xmp/1.0/DynamicMedia/" rdf:about=""
               xmpDM:shotName="Harbour"/></rdf:RDF></x:xmpmeta>)");
  const ContentMap content =
      List(card.Root(), {"Name", "Make", "shotDate", "shotName", "startTimecode"});
  EXPECT_THAT(KeysOf(content), ElementsAre("00010.MTS", "00013.MTS"));
  const FieldValueMap& clip = content.at("00010.MTS");
  EXPECT_EQ(TextOf(clip, "Name"), "00010");
  EXPECT_EQ(TextOf(clip, "Make"), "Canon");
  EXPECT_EQ(TextOf(clip, "shotDate"), "2008-12-31T23:16:24+01:00");
  EXPECT_EQ(TextOf(clip, "shotName"), "Harbour");
  EXPECT_EQ(TextOf(clip, "startTimecode"), "17:08:17:00") << "only the playlist has it";
}

TEST(AVCHDExtraPaths, AreOrdered) {
  const TempTree tree;
  const AvchdCard card(tree);
  card.Clips({"00001", "00002", "00003"});
  card.File("STREAM/00001.xmp");
  card.File("STREAM/00002.xmp");
  card.File("CLIPINF/00002.clpi");
  card.File("CLIPINF/00003.CLP");
  card.Playlist("00000", {{"00001", 1}, {"00002", 6}, {"00003", 1}});
  card.File("PLAYLIST/00001.mpls");
  card.File("PLAYLIST/00009.MPL");
  card.File("PLAYLIST/notes.txt");
  card.File("BACKUP/index.bdm");
  card.File("index.bdmv");
  const ContentMap content = List(card.Root());
  EXPECT_THAT(ExtraPathsOf(content.at("00001.MTS"), card.BDMV()),
              ElementsAre("CLIPINF/00001.CPI", "STREAM/00001.xmp", "CLIPINF/00002.clpi",
                          "STREAM/00002.xmp", "STREAM/00002.MTS", "PLAYLIST/00001.mpls",
                          "PLAYLIST/00000.MPL", "PLAYLIST/00009.MPL", "MOVIEOBJ.BDM", "index.bdmv",
                          "BACKUP", "STREAM", "PLAYLIST", "CLIPINF"));
  ContentMap single = Entry(card.Root(), "00001.MTS");
  single.merge(Entry(card.Root(), "00003.MTS"));
  EXPECT_EQ(content, single);
  EXPECT_EQ(ExtraPathsOf(content.at("00003.MTS"), card.BDMV())[0], "CLIPINF/00003.CLP");
}

// A card with a playlist for each clip would otherwise need memory for their product.
TEST(AVCHDExtraPaths, ShareTheListOfPlaylists) {
  const TempTree tree;
  const AvchdCard card(tree, "card");
  for (const char* number : {"00000", "00001", "00002"}) {
    card.Clips({number});
    card.Playlist(number, {{number}});
  }
  const ContentMap content = List(card.Root());
  std::vector<const any_regular_t*> last;  // item of each entry
  for (const auto& [key, fields] : content) {
    last.push_back(nullptr);
    fields.at(kExtraPathField).for_each_item([&last](const any_regular_t& item) {
      last.back() = &item;
    });
  }
  ASSERT_EQ(last.size(), 3u);
  EXPECT_NE(last[0], nullptr);
  EXPECT_EQ(last[0], last[1]);
  EXPECT_EQ(last[0], last[2]);
}

TEST(AVCHDExtraPaths, UseTheLongNamesOfADisc) {
  const TempTree tree;
  const AvchdCard disc(tree, "", kLongNames);
  disc.Clips({"00001", "00002"});
  disc.Playlist("00000", {{"00001", 1}, {"00002", 6}});
  EXPECT_THAT(ExtraPathsOf(List(disc.Root()).at("00001.m2ts"), disc.BDMV()),
              ElementsAre("CLIPINF/00001.clpi", "CLIPINF/00002.clpi", "STREAM/00002.m2ts",
                          "PLAYLIST/00000.mpls", "MovieObject.bdmv", "index.bdmv", "STREAM",
                          "PLAYLIST", "CLIPINF"));
}

TEST(AVCHDEntry, AcceptsAnyFileInSTREAM) {
  const TempTree tree;
  const AvchdCard card(tree);
  card.Clips({"00001", "00002", "00007"});
  card.File("STREAM/notes.v1.txt");
  card.Playlist("00000", {{"00001", 1}, {"00002", 6}});
  const FieldValueMap second = Entry(card.Root(), "00002.MTS").at("00002.MTS");
  EXPECT_THAT(ExtraPathsOf(second, card.BDMV()),
              ElementsAre("CLIPINF/00001.CPI", "STREAM/00001.MTS", "CLIPINF/00002.CPI",
                          "PLAYLIST/00000.MPL", "MOVIEOBJ.BDM", "index.bdm", "STREAM", "PLAYLIST",
                          "CLIPINF"));
  const FieldValueMap unlisted = Entry(card.Root(), "00007.MTS").at("00007.MTS");
  EXPECT_EQ(ExtraPathsOf(unlisted, card.BDMV()).front(), "PLAYLIST/00000.MPL");
  const FieldValueMap notes = Entry(card.Root(), "notes.v1.txt").at("notes.v1.txt");
  EXPECT_EQ(TextOf(notes, kNameField), "notes");
  EXPECT_EQ(ExtraPathsOf(notes, card.BDMV()).front(), "MOVIEOBJ.BDM")
      << "no playlists without a stream file";
  for (const char* missing : {"00009.MTS", "", ".", "..", "../index.bdm"}) {
    EXPECT_THAT(Entry(card.Root(), missing), IsEmpty()) << missing;
  }
}

TEST(AVCHDListing, SkipsSpecialFilesAndLinkLoops) {
  const TempTree tree;
  const AvchdCard card(tree);
  card.Clips({"00001", "00003"});
  card.Playlist("00000", {{"00001", 1}, {"00002", 6}, {"00003", 1}, {"00004", 1}});
  for (const char* pipe : {"STREAM/00002.MTS", "STREAM/00004.MTS", "STREAM/00001.xmp",
                           "CLIPINF/00002.CPI", "PLAYLIST/00001.MPL"}) {
    ASSERT_EQ(mkfifo(card.Path(pipe).c_str(), 0600), 0);
  }
  std::filesystem::create_symlink("00002.MPL", card.Path("PLAYLIST/00002.MPL"));
  std::filesystem::create_symlink("..", card.Path("BACKUP"));
  std::filesystem::create_symlink("../..", card.Path("STREAM/up"));
  EXPECT_EQ(Score(card.Root()), 100);
  const ContentMap content = List(card.Root(), ProviderAVCHD().GetFieldList());
  EXPECT_THAT(KeysOf(content), ElementsAre("00001.MTS", "00003.MTS"));
  EXPECT_THAT(ExtraPathsOf(content.at("00001.MTS"), card.BDMV()),
              ElementsAre("CLIPINF/00001.CPI", "PLAYLIST/00000.MPL", "MOVIEOBJ.BDM", "index.bdm",
                          "BACKUP", "STREAM", "PLAYLIST", "CLIPINF"));
  EXPECT_THAT(Entry(card.Root(), "00004.MTS"), IsEmpty());
}

// Ten thousand playlists that all contain the same clips.
TEST(AVCHDListing, HandlesTenThousandPlaylists) {
  const TempTree tree;
  const AvchdCard card(tree);
  const std::string first = card.Playlist("00000", {{"00010"}, {"00011", 6}, {"99999"}});
  for (int i = 1; i < 10'000; ++i) {
    std::filesystem::create_hard_link(first, card.Path("PLAYLIST/" + Numbered(i) + ".MPL"));
  }
  card.Clips({"00010", "00011", "99999"});
  const ContentMap content = List(card.Root());
  EXPECT_THAT(KeysOf(content), ElementsAre("00010.MTS", "99999.MTS"));
  const auto paths = ExtraPathsOf(content.at("00010.MTS"), card.BDMV());
  ASSERT_EQ(paths.size(), 3u + 10'000u + 5u);
  EXPECT_EQ(paths[3], "PLAYLIST/00000.MPL");
  EXPECT_EQ(paths[10'002], "PLAYLIST/09999.MPL");
}

// A small playlist can contain a clip 65,535 times.
TEST(AVCHDListing, LimitsRepeatedClipsAndTotalItems) {
  const TempTree tree;
  const AvchdCard card(tree);
  card.Clips({"00001", "00002"});
  std::vector<sorvik_test::PlayItemOf> repeats(65'535, {"00001", 6, 11});
  repeats[1] = {"00002", 6, 11};
  card.Playlist("00000", repeats);
  card.Playlist("heads", {{"00001"}, {"00002"}});
  const auto paths = ExtraPathsOf(List(card.Root()).at("00002.MTS"), card.BDMV());
  EXPECT_THAT(paths, ElementsAre("CLIPINF/00001.CPI", "STREAM/00001.MTS", "CLIPINF/00002.CPI",
                                 "PLAYLIST/00000.MPL", "PLAYLIST/heads.MPL", "MOVIEOBJ.BDM",
                                 "index.bdm", "STREAM", "PLAYLIST", "CLIPINF"));
  // Playlists beyond the limit of items per call count as unreadable.
  for (int i = 1; i < 33; ++i) {
    std::filesystem::create_hard_link(card.Path("PLAYLIST/00000.MPL"),
                                      card.Path("PLAYLIST/" + Numbered(i) + ".MPL"));
  }
  EXPECT_THAT(List(card.Root()), IsEmpty()) << "heads.MPL is the last one";
}

TEST(AVCHDProvider, DescribesItself) {
  const ProviderAVCHD provider;
  EXPECT_EQ(provider.GetFieldList().size(), 77u);
  EXPECT_THAT(provider.GetDefaultFieldList(),
              ElementsAre("Name", "Path", "shotDate", "Make", "Model", "startTimecode"));
  const FieldLabelMap labels = provider.GetFieldLabelList();
  EXPECT_EQ(labels.size(), 16u);
  EXPECT_EQ(labels.at("Path"), "$$$/Ortlane/Provider/XMPFilesMetadata/Column/FilePath=File Path");
  EXPECT_EQ(provider.GetUIString(), "AVCHD");
  EXPECT_EQ(provider.GetMaximumThumbnailHeight(480), 16);
  EXPECT_EQ(provider.GetMaximumThumbnailHeight(8), 8);
}

TEST(AVCHDThumbnail, IsTheSamePictureForAnyKey) {
  const ProviderAVCHD provider;
  struct Case {
    int width, height, expectedWidth, expectedHeight;
  };
  for (const Case& c : {Case{200, 8, 8, 8}, Case{80, 60, 16, 16}, Case{5, 60, 5, 16}}) {
    Bitplate** plate = provider.GetThumbnail("/missing", "no key", c.width, c.height, nullptr);
    ASSERT_NE(plate, nullptr);
    EXPECT_EQ(bitplateGetWidth(plate), c.expectedWidth);
    EXPECT_EQ(bitplateGetHeight(plate), c.expectedHeight);
    EXPECT_EQ(bitplateGetRowOrder(plate), BitplateRowOrder::kBottomUp);
    bitplateDispose(plate);
  }
  EXPECT_EQ(provider.GetThumbnail("", "", 0, 16, nullptr), nullptr);
}

}  // namespace
