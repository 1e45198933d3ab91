// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "formats/MediaTiming.h"
#include "support/IsoBytes.h"
#include "support/TempTree.h"

namespace {

using namespace sorvik_test;
using Sorvik::formats::ReadMediaTiming;

Bytes Table(const std::string& type, const std::vector<std::pair<unsigned, unsigned>>& runs) {
  Bytes body;
  body.U32(0).U32(static_cast<std::uint32_t>(runs.size()));
  for (const auto& [count, value] : runs) body.U32(count).U32(value);
  return Box(type, body);
}

// An edit: duration in units of the movie, start in units of the track.
Bytes Edits(const std::vector<std::pair<unsigned, unsigned>>& edits) {
  Bytes body;
  body.U32(0).U32(static_cast<std::uint32_t>(edits.size()));
  for (const auto& [duration, time] : edits) body.U32(duration).U32(time).U32(0x10000);
  return Box("edts", {Box("elst", body)});
}

Bytes Track(const std::string& handler, const Bytes& edits, const Bytes& stts,
            const Bytes& ctts = {}) {
  return Box("trak", {edits, Box("mdia", {MediaHeader(2500, 1000), Handler(handler),
                                          Box("minf", {Box("stbl", {stts, ctts})})})});
}

class MediaTiming : public testing::Test {
 protected:
  auto Timing(const std::vector<Bytes>& tracks) {
    std::vector<Bytes> boxes = {MovieHeader(1000, 400)};
    boxes.insert(boxes.end(), tracks.begin(), tracks.end());
    return ReadMediaTiming(tree_.File("clip.mp4", Box("moov", boxes).str()), 25);
  }
  const TempTree tree_;
};

TEST_F(MediaTiming, PicturesAreReorderedAndEdited) {
  // Ten pictures of 100 units. The first one in the file is presented at 200, the earliest at 100.
  const Bytes stts = Table("stts", {{10, 100}});
  const Bytes ctts = Table("ctts", {{1, 200}, {1, 0}, {8, 100}});
  const auto plain = Timing({Track("vide", {}, stts, ctts)});
  ASSERT_TRUE(plain);
  EXPECT_EQ(plain->pictures, 10u);
  EXPECT_NEAR(plain->firstStamp, 0.08, 1e-9);
  EXPECT_NEAR(plain->firstPicture, 0.04, 1e-9);

  // The edit starts at the second picture and is 200 ms long, after 20 ms without a picture; the
  // sound starts at once.
  const auto edited = Timing({Track("soun", {}, Table("stts", {{10, 100}})),
                              Track("vide", Edits({{20, UINT32_MAX}, {200, 200}}), stts, ctts)});
  ASSERT_TRUE(edited);
  EXPECT_EQ(edited->pictures, 5u);
  EXPECT_NEAR(edited->firstStamp, 0, 1e-9);
  EXPECT_NEAR(edited->firstPicture, 0.02, 1e-9);
}

TEST_F(MediaTiming, SeveralEdits) {
  const Bytes stts = Table("stts", {{10, 100}});
  // Of 80 ms each, from the second picture and from the eighth.
  const auto timing = Timing({Track("vide", Edits({{80, 100}, {80, 700}}), stts)});
  ASSERT_TRUE(timing && timing->isPlaced);
  EXPECT_EQ(timing->pictures, 4u);
  EXPECT_NEAR(timing->firstPicture, 0, 1e-9);
  // A pause in the middle.
  const auto paused =
      Timing({Track("vide", Edits({{80, 100}, {40, UINT32_MAX}, {80, 700}}), stts)});
  EXPECT_FALSE(paused->isPlaced);
}

TEST_F(MediaTiming, FragmentsAreCounted) {
  const auto fragment = [](unsigned time, const Bytes& run) {
    const Bytes header = Box("tfhd", Bytes().U32(0).U32(0));
    const Bytes start = Box("tfdt", Bytes().U32(0).U32(time));
    return Box("moof", {Box("traf", {header, start, Box("trun", run)})});
  };
  const Bytes defaults = Box("trex", Bytes().U32(0).U32(0).U32(1).U32(100).U64(0));
  Bytes file = Box("moov", {MovieHeader(1000, 0), Track("vide", {}, Table("stts", {})),
                            Box("mvex", {defaults})});
  // Three reordered pictures, then five.
  file.Add(fragment(0, Bytes().U32(0x800).U32(3).U32(100).U32(200).U32(0)));
  file.Add(Box("mdat", Bytes().U32(1)));
  file.Add(fragment(300, Bytes().U32(0).U32(5)));
  const std::string bytes = file.str();
  const auto timing = ReadMediaTiming(tree_.File("fragments.mp4", bytes), 25);
  ASSERT_TRUE(timing && timing->isPlaced);
  EXPECT_EQ(timing->pictures, 8u);
  EXPECT_EQ(timing->rateNumerator, 25u);
  EXPECT_NEAR(timing->firstPicture, 0.04, 1e-9);
  const auto truncated =
      ReadMediaTiming(tree_.File("cut.mp4", bytes.substr(0, bytes.size() - 4)), 25);
  EXPECT_FALSE(truncated->isPlaced);
}

TEST_F(MediaTiming, InvalidTables) {
  const Bytes stts = Table("stts", {{10, 100}});
  EXPECT_FALSE(Timing({Track("soun", {}, stts)}));
  EXPECT_FALSE(Timing({Track("vide", {}, Table("stts", {}))}));
  // Counts and sums that no file has.
  EXPECT_FALSE(Timing({Track(
      "vide", {},
      Table("stts", std::vector<std::pair<unsigned, unsigned>>(9, {UINT32_MAX, UINT32_MAX})))}));
  EXPECT_FALSE(Timing({Track("vide", {}, Box("stts", Bytes().U32(0).U32(UINT32_MAX)))}));
  const auto zeros = Timing({Track("vide", {}, stts, Table("ctts", {{0, 1}, {0, 2}, {3, 0}}))});
  ASSERT_TRUE(zeros);
  EXPECT_EQ(zeros->pictures, 10u);
  EXPECT_FALSE(ReadMediaTiming(tree_.File("clip.mp4", "\0\0\0\1moov"), 25));
  EXPECT_FALSE(ReadMediaTiming(tree_.Path("missing.mts"), 25));
  EXPECT_FALSE(ReadMediaTiming(tree_.File("clip.mts", "G"), 25));
}

}  // namespace
