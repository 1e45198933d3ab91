// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>

#include "formats/avchd/Playlist.h"
#include "foundation/CallScope.h"
#include "support/Bytes.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik::foundation;
using namespace Sorvik::formats;
using avchd::FindShot;
using avchd::FindShotOfStream;
using avchd::ParsePlaylist;
using avchd::Playlist;
using sorvik_test::Bytes;

struct Item {
  const char* clip;
  unsigned condition;
  std::uint32_t in = 45000;
  std::uint32_t out = 90000;
};

Bytes MakeItem(const Item& item) {
  Bytes b;
  b.U16(20).Text(item.clip).Text("M2TS");  // length of what follows; clip; codec
  b.U8(0).U8(0xF0 | item.condition);       // reserved; high bits don't matter
  b.U8(0).U32(item.in).U32(item.out);      // STC id; IN; OUT
  return b;
}

// Header of 58 bytes, the play-list block, and `tail` bytes after it.
Bytes MakePlaylist(const std::vector<Item>& items, std::size_t tail = 6) {
  Bytes block;
  block.U16(0).U16(items.size()).U16(0);  // reserved; items; sub-paths
  for (const Item& item : items) block.Add(MakeItem(item));
  Bytes file;
  file.Text("MPLS0100").U32(58).U32(0).U32(0);  // start of list, marks, extension
  file.PadTo(58).U32(block.size()).Add(block).Fill(tail);
  return file;
}

std::string Clips(const Playlist& playlist) {
  std::string all;
  for (const auto& item : playlist.items) all.append(item.ClipName()).append(" ");
  return all;
}

std::string ShotClips(const std::optional<avchd::ShotOfClip>& shot) {
  std::string all;
  if (!shot) return "none";
  for (auto i = shot->first; i < shot->end; ++i) {
    all.append(shot->playlist->items[i].ClipName()).append(" ");
  }
  return all;
}

const std::vector<Item> kFive = {
    {"00001", 1}, {"00002", 6}, {"00003", 6}, {"00004", 5}, {"00005", 6}};

TEST(Playlist, GroupsItemsIntoShots) {
  const Bytes file = MakePlaylist(kFive);
  const auto list = std::make_shared<const Playlist>(ParsePlaylist(file.Reader()));
  EXPECT_EQ(Clips(*list), "00001 00002 00003 00004 00005 ");
  EXPECT_EQ(list->items[0].inTime, 45000u);
  EXPECT_EQ(list->items[0].outTime, 90000u);
  EXPECT_EQ(ShotClips(FindShot(list, "00003")), "00001 00002 00003 ");
  EXPECT_EQ(ShotClips(FindShot(list, "00005")), "00004 00005 ");
  EXPECT_EQ(ShotClips(FindShot(list, "00006")), "none");
  const auto headless = std::make_shared<const Playlist>(
      ParsePlaylist(MakePlaylist({{"00001", 6}, {"00002", 6}}).Reader()));
  EXPECT_EQ(ShotClips(FindShot(headless, "00002")), "00001 00002 ");
}

TEST(Playlist, RespectsTheBoundsOfItems) {
  const auto clips = [](const Bytes& file) { return Clips(ParsePlaylist(file.Reader())); };
  EXPECT_EQ(clips(MakePlaylist(kFive, 2)), "00001 00002 00003 00004 00005 ");
  EXPECT_EQ(clips(MakePlaylist(kFive, 1)), "00001 00002 00003 00004 ") << "one byte follows";
  EXPECT_EQ(clips(MakePlaylist(kFive, 0)), "00001 00002 00003 00004 ") << "none follows";
  EXPECT_EQ(clips(MakePlaylist({})), "");
  EXPECT_EQ(clips(MakePlaylist(kFive).Set(4, 0x30323030, 4)), "") << "version 0200";
  EXPECT_EQ(clips(MakePlaylist(kFive).Set(8, 0xFFFFFFFF, 4)), "") << "list starts past the end";
  EXPECT_EQ(clips(MakePlaylist(kFive).Set(58, 0xFFFFFFFC, 4)), "") << "start + length wraps";
  const Bytes complete = MakePlaylist(kFive, 6);
  Bytes longer = MakePlaylist(kFive, 6);
  longer.Set(58, complete.size() - 58 - 4, 4);
  EXPECT_EQ(clips(longer), "00001 00002 00003 00004 00005 ") << "block to the last byte";
  longer.Set(58, complete.size() - 58 - 3, 4);
  EXPECT_EQ(clips(longer), "") << "block one byte past the end";
  EXPECT_EQ(clips(MakePlaylist(kFive, 3).Set(64, 500, 2)), "00001 00002 00003 00004 00005 ")
      << "count above the number of items";
  EXPECT_EQ(clips(MakePlaylist(kFive).Set(64, 2, 2)), "00001 00002 ");
}

TEST(Playlist, IncludesItemsShorterThanTheirFields) {
  Bytes file;
  file.Text("MPLS0100").U32(21).Fill(9).U32(8).U16(0).U16(9).U16(0);
  file.U16(0).U16(0).Text("0");  // two items of length 0, then three bytes to the end
  file.Text("12");
  const Playlist list = ParsePlaylist(file.Reader());
  ASSERT_EQ(list.items.size(), 2u);
  EXPECT_EQ(list.items[1].ClipName(), std::string_view("012\0\0", 5)) << "zero past the end";
  EXPECT_EQ(list.items[1].ConnectionCondition(), 0);
  EXPECT_EQ(list.items[1].inTime, 0u);
}

TEST(Playlist, SurvivesTruncation) {
  const Bytes file = MakePlaylist(kFive);
  std::size_t previous = 0;
  for (std::size_t size = 0; size <= file.size(); ++size) {
    const Bytes cut = file.Cut(size);
    const Playlist list = ParsePlaylist(cut.Reader());
    EXPECT_GE(list.items.size(), previous) << "a longer file has no fewer items";
    previous = list.items.size();
  }
  EXPECT_EQ(previous, 5u);
}

// With one mark of item 3 and its details.
Bytes MakeMarked() {
  Bytes file = MakePlaylist(kFive, 0);
  const auto marks = file.size();
  file.U32(16).U16(1);                                    // length, count
  file.U8(0).U8(1).U16(3).U32(45000).U16(0xFFFF).U32(0);  // type, item, time, PID, duration
  const auto extension = file.size();
  file.U32(0).U32(24).U24(0).U8(1);                       // length, data start, entries
  file.U16(0x1000).U16(0x0100).U32(24).U32(12 + 6 + 66);  // ids, start, length
  file.Text("PLEX").U32(0).U32(12);                       // start of the mark details
  file.U32(68).U16(1);                                    // length, count
  file.U16(0x0108).U16(0x3100).U32(0).U16(0xFFFF);        // maker, model, ?, thumbnail
  file.Hex("46 20220609094045").U8(0x91).Fill(41);        // zone, date, name
  file.Hex("15284317").U16(0);                            // frames .. hours
  file.Set(12, marks, 4).Set(16, extension, 4);
  return file;
}

TEST(Playlist, ReadsTheMarkOfAShot) {
  const Bytes file = MakeMarked();
  const Playlist list = ParsePlaylist(file.Reader());
  const auto* mark = MarkOfShot(list, 3);
  ASSERT_NE(mark, nullptr);
  EXPECT_EQ(mark->maker, 0x0108);
  EXPECT_EQ(mark->recorded[0], std::byte{0x46});
  EXPECT_EQ(mark->recorded[7], std::byte{0x45});
  EXPECT_EQ(mark->startTimecode[0], std::byte{0x15});
  EXPECT_EQ(mark->startTimecode[3], std::byte{0x17});
  EXPECT_EQ(MarkOfShot(list, 0), nullptr);
}

TEST(Playlist, KeepsItemsWithInvalidExtension) {
  const Bytes complete = MakeMarked();
  const auto marks = complete.Reader().U32BE(12).value();
  const auto extension = complete.Reader().U32BE(16).value();
  for (const std::size_t at :
       {std::size_t{12}, std::size_t{16}, std::size_t{marks + 4}, std::size_t{extension + 12},
        std::size_t{extension + 16}, std::size_t{extension + 20}, std::size_t{extension + 32},
        std::size_t{extension + 40}}) {
    Bytes file = complete;
    file.Set(at, 0xFFFFFFFF, 4);
    const Playlist list = ParsePlaylist(file.Reader());
    EXPECT_EQ(list.items.size(), 5u) << at;
    EXPECT_LE(list.marks.size(), 1u) << at;
  }
}

TEST(Playlist, ReadsACameraSample) {
  const auto sample = sorvik_test::ReadSample("avchd/ElishaAz-AVCHD-Converter/files/00002.MPL");
  if (!sample) GTEST_SKIP() << "samples not found";
  const auto list = std::make_shared<const Playlist>(ParsePlaylist(ReaderOf(*sample)));
  ASSERT_EQ(list->items.size(), 13u);
  ASSERT_EQ(list->marks.size(), 5u);
  EXPECT_EQ(ShotClips(FindShot(list, "00015")), "00014 00015 00016 ");
  EXPECT_EQ(list->items[12].outTime - list->items[12].inTime, 157658u);
  const auto* mark = MarkOfShot(*list, 7);
  ASSERT_NE(mark, nullptr);
  EXPECT_EQ(mark->recorded[4], std::byte{0x15}) << "2022-06-15";
}

TEST(ShotOfStream, IsSearchedFromTheClipNumberDownward) {
  sorvik_test::TempTree tree;
  const CallScope scope;
  tree.File("BDMV/PLAYLIST/00003.mpls", MakePlaylist({{"00007", 1}, {"00008", 6}}).str());
  tree.File("BDMV/PLAYLIST/00009.mpls", MakePlaylist({{"00007", 1}}).str());
  tree.File("BDMV/PLAYLIST/00006.MPL", "not a playlist");
  tree.File("BDMV/PLAYLIST/00006.mpls", MakePlaylist({{"00007", 1}}).str());
  tree.File("BDMV/PLAYLIST/4.MPL", MakePlaylist({{"00007", 1}}).str());
  tree.File("BDMV/PLAYLIST/00005.Mpl", MakePlaylist({{"00007", 1}}).str());
  const auto shot = [&tree](std::string_view name) {
    return ShotClips(FindShotOfStream(tree.Path(std::string("BDMV/STREAM/").append(name))));
  };
  EXPECT_EQ(shot("00007.MTS"), "00007 00008 ");
  EXPECT_EQ(shot("00002.MTS"), "none") << "only playlists up to the clip number";
  EXPECT_EQ(shot("CLIP.MTS"), "none");
  EXPECT_EQ(ShotClips(FindShotOfStream("00007.MTS")), "none");
}

TEST(ShotOfStream, SkipsHugeFilesAndFolders) {
  sorvik_test::TempTree tree;
  const std::string huge = tree.File("BDMV/PLAYLIST/00001.MPL", MakePlaylist(kFive).str());
  std::filesystem::resize_file(huge, 0x100000000);
  EXPECT_EQ(avchd::LoadPlaylist(huge)->items.size(), 0u);
  tree.Folder("BDMV/PLAYLIST/00002.MPL");
  tree.File("BDMV/PLAYLIST/00000.MPL", MakePlaylist(kFive).str());
  EXPECT_EQ(ShotClips(FindShotOfStream(tree.Path("BDMV/STREAM/00002.MTS"))), "00001 00002 00003 ");
}

}  // namespace
