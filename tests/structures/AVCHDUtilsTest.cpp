// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <optional>

#include "foundation/CallScope.h"
#include "providers/structures/AVCHDUtils.h"
#include "support/AvchdCard.h"

namespace {

using namespace Sorvik;
using sorvik_test::AvchdCard;
using sorvik_test::Bytes;
using sorvik_test::PlayItemOf;
using sorvik_test::PlaylistOf;
using sorvik_test::TempTree;
using testing::ElementsAre;
using testing::IsEmpty;

using Names = std::vector<std::string>;

UTF16String Wide(const std::string& path) { return Hestra::MakeString(path); }

Names Heads(const std::string& playlist) {
  Names names;
  AVCHDUtils::GetShotHeadNames(Wide(playlist), names);
  return names;
}

// The file names of the paths that an operation returns for `path`.
template <class Operation>
Names FilesOf(Operation operation, const std::string& path) {
  std::vector<UTF16String> files;
  operation(Wide(path), files);
  Names names;
  for (const UTF16String& file : files) {
    names.push_back(std::filesystem::path(Hestra::MakeStdString(file)).filename());
  }
  return names;
}
Names ShotOf(const std::string& stream) { return FilesOf(AVCHDUtils::GetShotClips, stream); }
Names HeadFilesOf(const std::string& list) { return FilesOf(AVCHDUtils::GetShotHeadClips, list); }

Names AllItems(const std::string& playlist) {
  class Collector final : public AVCHDUtils::PlayItemVisitor {
   public:
    bool Visit(const formats::avchd::PlayItem& item) override {
      names.emplace_back(item.ClipName());
      return true;
    }
    Names names;
  } collector;
  AVCHDUtils::ForEachPlayItem(Wide(playlist), collector);
  return collector.names;
}

const std::vector<PlayItemOf> kTwoShots = {
    {"00001", 1}, {"00002", 6}, {"00003", 6}, {"00004", 5}, {"00005", 6}};

TEST(PlayItems, AreGroupedByConnectionCondition) {
  const TempTree tree;
  const std::string file = tree.File("a.MPL", PlaylistOf(kTwoShots).str());
  EXPECT_THAT(Heads(file), ElementsAre("00001", "00004"));
  Names shot{"previous content"};
  EXPECT_TRUE(AVCHDUtils::FindShotOfClip("00003", Wide(file), shot));
  EXPECT_THAT(shot, ElementsAre("00001", "00002", "00003"));
  EXPECT_TRUE(AVCHDUtils::FindShotOfClip("00004", Wide(file), shot));
  EXPECT_THAT(shot, ElementsAre("00004", "00005"));
  for (const char* missing : {"00006", "0000", "000011", ""}) {
    EXPECT_FALSE(AVCHDUtils::FindShotOfClip(missing, Wide(file), shot)) << missing;
  }
}

TEST(PlayItems, StartAShotAtTheFirstItem) {
  const TempTree tree;
  const std::string file =
      tree.File("a.MPL", PlaylistOf({{"00001", 6}, {"00002", 6}, {"00003", 2}}).str());
  EXPECT_THAT(Heads(file), ElementsAre("00003"));
  Names shot;
  EXPECT_TRUE(AVCHDUtils::FindShotOfClip("00002", Wide(file), shot));
  EXPECT_THAT(shot, ElementsAre("00001", "00002"));
}

TEST(PlayItems, StopWhenTheVisitorReturnsFalse) {
  const TempTree tree;
  class TwoOnly final : public AVCHDUtils::PlayItemVisitor {
   public:
    bool Visit(const formats::avchd::PlayItem&) override { return ++visits < 2; }
    int visits = 0;
  } visitor;
  AVCHDUtils::ForEachPlayItem(Wide(tree.File("a.MPL", PlaylistOf(kTwoShots).str())), visitor);
  EXPECT_EQ(visitor.visits, 2);
}

// A truncated file gives the first of its items; only the complete file gives all.
TEST(PlayItems, SurviveTruncation) {
  const TempTree tree;
  const Bytes complete = PlaylistOf(kTwoShots, 2);
  const Names all = AllItems(tree.File("complete.MPL", complete.str()));
  ASSERT_EQ(all.size(), 5u);
  for (std::size_t size = 0; size < complete.size(); ++size) {
    // Adapt the block length, so that the bounds of the items are tested.
    Bytes cut = complete.Cut(size);
    if (size >= 62) cut.Set(58, size - 62, 4);
    const Names found = AllItems(tree.File("cut.MPL", cut.str()));
    ASSERT_LT(found.size(), all.size()) << size;
    EXPECT_TRUE(std::equal(found.begin(), found.end(), all.begin())) << size;
    // 68 bytes up to the first item, 22 for each, and two bytes must follow an item.
    EXPECT_EQ(found.size(), size < 70 ? 0 : (size - 70) / 22) << size;
  }
}

TEST(PlayItems, RespectDeclaredLengths) {
  const TempTree tree;
  struct Case {
    const char* why;
    Bytes file;
    std::size_t items;
  };
  const Bytes good = PlaylistOf(kTwoShots);
  const auto with = [&good](std::size_t at, std::uint64_t value, std::size_t width) {
    return Bytes(good).Set(at, value, width);
  };
  const Case cases[] = {
      {"unchanged", good, 5},
      {"another type", with(0, 0x4D504C54, 4), 0},
      {"version 0200", with(4, 0x30323030, 4), 0},
      {"20 bytes with the right magic", good.Cut(20), 0},
      {"no items", with(64, 0, 2), 0},
      {"count below the number of items", with(64, 2, 2), 2},
      {"count above the number of items: the tail reads as empty items", with(64, 99, 2), 7},
      {"block up to the last byte", with(58, good.size() - 62, 4), 5},
      {"block one byte longer than the file", with(58, good.size() - 61, 4), 0},
      {"start + block length exceeds 32 bits", with(58, 0xFFFFFFFF, 4), 0},
      {"block shorter than its items", with(58, 0, 4), 5},
      {"list starts past the end of the file", with(8, good.size() - 9, 4), 0},
      {"list start + 10 exceeds 32 bits", with(8, 0xFFFFFFFF, 4), 0},
      {"third item longer than the file", with(68 + 44, 0xFFFF, 2), 2},
      {"last item to the file's last byte but one", with(68 + 88, 20 + 4, 2), 5},
      {"last item to the file's last byte", with(68 + 88, 20 + 5, 2), 4},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(AllItems(tree.File("case.MPL", c.file.str())).size(), c.items) << c.why;
  }
}

// An item may be shorter than its fields, which are then read from the bytes after it.
TEST(PlayItems, IncludeItemsShorterThanTheirFields) {
  const TempTree tree;
  const std::string file =
      tree.File("a.MPL", PlaylistOf({{"00001", 1, 0}, {"00002", 1, 5}, {"00003", 1}}, 2).str());
  const Names items = AllItems(file);
  ASSERT_EQ(items.size(), 3u);
  EXPECT_EQ(items[1], "00002");
  EXPECT_EQ(items[2], "00003");
  // At the end of the file the missing bytes read as zero.
  const Names last = AllItems(tree.File("b.MPL", PlaylistOf({{"", 1, 0}}, 2).str()));
  EXPECT_THAT(last, ElementsAre(std::string(5, '\0')));
}

TEST(PlayItems, AreReadFromRegularFilesOfLimitedSize) {
  const TempTree tree;
  EXPECT_THAT(Heads(tree.Path("missing.MPL")), IsEmpty());
  EXPECT_THAT(Heads(tree.Folder("folder.MPL")), IsEmpty());
  ASSERT_EQ(mkfifo(tree.Path("fifo.MPL").c_str(), 0600), 0);
  EXPECT_THAT(Heads(tree.Path("fifo.MPL")), IsEmpty());
  const std::string sparse = tree.File("sparse.MPL", PlaylistOf(kTwoShots).str());
  std::filesystem::resize_file(sparse, 4ULL << 30);
  EXPECT_THAT(Heads(sparse), IsEmpty());
}

TEST(PlayItems, MatchACameraSample) {
  const auto sample = sorvik_test::ReadSample("avchd/ElishaAz-AVCHD-Converter/files/00002.MPL");
  if (!sample) GTEST_SKIP() << "samples not found";
  const TempTree tree;
  const std::string file = tree.File("00002.MPL", *sample);
  EXPECT_EQ(AllItems(file).size(), 13u);
  EXPECT_THAT(Heads(file), ElementsAre("00010", "00013", "00014", "00017", "00022"));
  Names shot;
  EXPECT_TRUE(AVCHDUtils::FindShotOfClip("00019", Wide(file), shot));
  EXPECT_THAT(shot, ElementsAre("00017", "00018", "00019", "00020", "00021"));
}

TEST(PlayItems, RequireVersion0100) {
  const auto sample =
      sorvik_test::ReadSample("avchd/agentjp-bdinfo-rs/BigBuckBunny/BDMV/PLAYLIST/00000.mpls");
  if (!sample) GTEST_SKIP() << "samples not found";
  const TempTree tree;
  EXPECT_THAT(AllItems(tree.File("00000.mpls", *sample)), IsEmpty());
  // Only its version is different.
  std::string older = *sample;
  older.replace(4, 4, "0100");
  EXPECT_EQ(AllItems(tree.File("00001.mpls", older)).size(), 1u);
}

TEST(ShotHeadClips, AreTheExistingStreamFiles) {
  const TempTree tree;
  const AvchdCard card(tree);
  card.File("STREAM/00001.m2ts");
  card.File("STREAM/00001.MTS");
  card.File("STREAM/00002.m2ts");
  card.File("STREAM/00003.M2TS");
  card.File("STREAM/00004.mts");
  card.File("outside.MTS");
  const std::string playlist = card.Playlist(
      "00000", {{"00001"}, {"00002"}, {"00003"}, {"00004"}, {"00005"}, {"../el"}, {"00001"}});
  EXPECT_THAT(HeadFilesOf(playlist), ElementsAre("00001.MTS", "00002.m2ts", "00001.MTS"));
  std::filesystem::remove_all(card.Path("STREAM"));
  EXPECT_THAT(HeadFilesOf(playlist), IsEmpty());
}

TEST(ShotClips, ComeFromPlaylistsUpToTheClipNumber) {
  const TempTree tree;
  const AvchdCard card(tree);
  card.Clips({"00006", "00007", "00008"});
  const std::string stream = card.Path("STREAM/00007.MTS");
  card.File("PLAYLIST/00009.mpls", PlaylistOf({{"00007"}, {"00008", 6}}).str());
  EXPECT_THAT(ShotOf(stream), IsEmpty())
      << "only a playlist with a higher number contains the clip";
  card.File("PLAYLIST/00003.mpls", PlaylistOf({{"00006"}, {"00007", 6}}).str());
  EXPECT_THAT(ShotOf(stream), ElementsAre("00006.MTS", "00007.MTS"));
  card.File("PLAYLIST/00005.MPL", PlaylistOf({{"00008"}}).str());
  EXPECT_THAT(ShotOf(stream), ElementsAre("00006.MTS", "00007.MTS")) << "skips 00005";
  card.File("PLAYLIST/00007.mpls", PlaylistOf({{"00007"}}).str());
  EXPECT_THAT(ShotOf(stream), ElementsAre("00007.MTS"));
  card.File("PLAYLIST/00007.MPL", PlaylistOf({{"00008"}}).str());
  EXPECT_THAT(ShotOf(stream), ElementsAre("00006.MTS", "00007.MTS"))
      << ".MPL takes precedence over .mpls";
}

TEST(ShotClips, RequireANumberedClip) {
  const TempTree tree;
  const AvchdCard card(tree);
  card.File("STREAM/abcde.MTS");
  card.File("STREAM/00000.MTS");
  card.Playlist("00000", {{"abcde"}, {"00000"}});
  EXPECT_THAT(ShotOf(card.Path("STREAM/abcde.MTS")), IsEmpty());
  EXPECT_THAT(ShotOf(card.Path("STREAM/00000.MTS")), ElementsAre("00000.MTS"));
  EXPECT_THAT(ShotOf("/00000.MTS"), IsEmpty());
}

// The index that listings use gives the same shots as a search through the playlists, on a card
// whose playlists overlap, repeat clips and skip numbers.
TEST(ShotClips, AreTheSameWithAndWithoutAnIndex) {
  const TempTree tree;
  const AvchdCard card(tree);
  Names numbers;
  char number[8];
  for (int i = 0; i < 60; ++i) {
    std::snprintf(number, sizeof number, "%05d", i);
    numbers.emplace_back(number);
  }
  card.Clips(numbers);
  unsigned seed = 7;
  const auto next = [&seed](unsigned below) {
    return (seed = seed * 1103515245 + 12345) / 65536 % below;
  };
  for (unsigned list = 0; list < 60; list += 1 + next(4)) {
    std::vector<PlayItemOf> items;
    for (unsigned i = 0; i < 8; ++i) items.push_back({numbers[next(60)], next(2) == 0 ? 6u : 1u});
    card.Playlist(numbers[list], items);
  }
  std::vector<Names> walked;
  for (const auto& n : numbers) walked.push_back(ShotOf(card.Path("STREAM/" + n + ".MTS")));
  const foundation::CallScope scope;
  formats::avchd::IndexPlaylists(card.Path("PLAYLIST"));
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    EXPECT_EQ(ShotOf(card.Path("STREAM/" + numbers[i] + ".MTS")), walked[i]) << numbers[i];
  }
}

TEST(IsStructureFile, RequiresANumberedFileInItsFolder) {
  const TempTree tree;
  const AvchdCard card(tree);
  const AvchdCard bare(tree, "bare");
  std::filesystem::remove(bare.Path("CLIPINF"));
  const std::pair<std::string, bool> cases[] = {
      {card.Path("STREAM/00001.MTS"), true},
      {card.Path("STREAM/00001.m2ts"), true},
      {card.Path("CLIPINF/00001.CPI"), true},
      {card.Path("CLIPINF/00001.clpi"), true},
      {card.Path("STREAM/00001.CPI"), false},
      {card.Path("CLIPINF/00001.MTS"), false},
      {card.Path("STREAM/0001.MTS"), false},
      {card.Path("STREAM/000001.MTS"), false},
      {card.Path("STREAM/0000a.MTS"), false},
      {card.Path("STREAM/00001.mp4"), false},
      {card.Path("stream/00001.MTS"), true},
      {tree.Path("STREAM/00001.MTS"), false},
      {bare.Path("STREAM/00001.MTS"), false},
      {bare.Path("CLIPINF/00001.CPI"), true},
      {"/00001.MTS", false},
      {"00001.MTS", false},
  };
  for (const auto& [path, expected] : cases) {
    EXPECT_EQ(AVCHDUtils::IsStructureFile(Wide(path)), expected) << path;
  }
}

}  // namespace
