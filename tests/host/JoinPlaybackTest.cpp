// SPDX-License-Identifier: MIT
// Joins made recordings with the lists of the program and plays them with ffmpeg: no step other
// than one frame at a join, and the same pictures as the uncut recording.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/AvchdCard.h"
#include "support/Cards.h"
#include "support/Ffmpeg.h"
#include "support/ModernCards.h"
#include "support/Program.h"
#include "support/TempTree.h"

namespace {

using namespace sorvik_test;

constexpr std::size_t kFrames = 200;  // 8 s at 25 frames per second
constexpr char kPicture[] = "-f lavfi -i testsrc2=size=160x90:rate=25:duration=8 ";
constexpr char kSound[] = "-f lavfi -i sine=frequency=440:sample_rate=48000:duration=8 ";
constexpr char kAvc[] =
    "-c:v libx264 -preset ultrafast -bf 2 -g 25 -x264-params b-adapt=0:open-gop=1 ";

std::string Bytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The offsets of the transport packets in which a picture begins.
std::vector<std::size_t> PictureStarts(const std::string& bytes, std::size_t stride) {
  const auto at = [&bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  std::vector<std::size_t> starts;
  for (std::size_t packet = 0; packet + stride <= bytes.size(); packet += stride) {
    const std::size_t head = packet + stride - 188;
    if ((at(head + 1) & 0x40) == 0) continue;
    const std::size_t payload = head + 4 + ((at(head + 3) & 0x20) != 0 ? 1u + at(head + 4) : 0u);
    const bool isVideo = bytes.compare(payload, 3, std::string("\0\0\1", 3)) == 0 &&
                         (at(payload + 3) & 0xF0) == 0xE0;
    if (isVideo) starts.push_back(packet);
  }
  return starts;
}

class JoinPlayback : public testing::Test {
 protected:
  void SetUp() override {
    if (!HasFfmpeg()) GTEST_SKIP() << "ffmpeg and ffprobe aren't installed";
  }

  // Cuts a transport stream in front of these pictures. The parts go on in the middle of a group
  // of pictures, as those of a camera that cuts by size.
  std::vector<std::string> CutStream(const std::string& original, std::size_t stride,
                                     const std::vector<std::size_t>& pictures) {
    const std::string bytes = Bytes(original);
    const auto starts = PictureStarts(bytes, stride);
    std::vector<std::string> parts;
    std::size_t from = 0;
    for (const std::size_t picture : pictures) {
      parts.push_back(bytes.substr(from, starts.at(picture) - from));
      from = starts.at(picture);
    }
    parts.push_back(bytes.substr(from));
    return parts;
  }

  std::string Input(const std::string& list) { return "-safe 0 -i '" + list + "'"; }

  std::string WriteList(const std::string& path, const std::string& key,
                        const std::string& provider) {
    const std::string list = tree_.Path("lists/shot.ffconcat");
    tree_.Folder("lists");
    const ProgramResult result =
        RunSorvik({"join", path, key, "--format", "ffconcat", "--provider", provider, "-o", list});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(CountFrames(path, key, provider), kFrames);
    return list;
  }

  // The sum of the lengths of the parts of the first track.
  static std::size_t CountFrames(const std::string& path, const std::string& key,
                                 const std::string& provider) {
    const ProgramResult csv =
        RunSorvik({"join", path, key, "--format", "csv", "--provider", provider});
    std::istringstream lines(csv.output);
    std::size_t frames = 0;
    for (std::string line; std::getline(lines, line);) {
      std::vector<std::string> cells;
      std::istringstream columns(line);
      for (std::string cell; std::getline(columns, cell, ',');) cells.push_back(cell);
      if (cells.size() > 8 && cells[2].starts_with("picture")) frames += std::stoul(cells[8]);
    }
    return frames;
  }

  // Each picture of the list is one frame after the one before.
  void ExpectSteps(const std::string& list, double frame = 0.04) {
    const auto times = PacketTimes(Input(list), "v:0");
    ASSERT_EQ(times.size(), kFrames);
    for (std::size_t i = 1; i < times.size(); ++i) {
      ASSERT_NEAR(times[i] - times[i - 1], frame, 0.0011) << "at picture " << i;
    }
  }

  void ExpectSamePictures(const std::string& list, const std::string& original) {
    const auto sums = FrameChecksums("-i '" + original + "'");
    ASSERT_EQ(sums.size(), kFrames);
    EXPECT_EQ(FrameChecksums(Input(list)), sums);
  }

  // The sum of the lengths of the files in a list.
  static double TotalSeconds(const std::string& list) {
    std::ifstream file(list);
    double total = 0;
    for (std::string line; std::getline(file, line);) {
      if (line.starts_with("duration ")) total += std::stod(line.substr(9));
    }
    return total;
  }

  TempTree tree_;
};

TEST_F(JoinPlayback, StreamsCutInsideGroups) {
  const std::string original = tree_.Path("original.m2ts");
  ASSERT_TRUE(RunFfmpeg(std::string(kPicture) + kSound + kAvc +
                        "-c:a ac3 -f mpegts -mpegts_m2ts_mode 1 " + original));
  const AvchdCard card(tree_, "avchd");
  const auto parts = CutStream(original, 192, {60, 131});
  const std::vector<std::string> names = {"00001", "00002", "00003"};
  for (std::size_t i = 0; i < names.size(); ++i) card.File("STREAM/" + names[i] + ".MTS", parts[i]);
  card.Playlist("00001", {{"00001"}, {"00002", 6}, {"00003", 6}});
  // The times of the playlist are those of another card, so that the streams are counted.
  const std::string list = WriteList(card.Root(), "00001.MTS", "avchd");
  ExpectSteps(list);
  ExpectSamePictures(list, original);
}

TEST_F(JoinPlayback, StreamsCutAnywhere) {
  const std::string original = tree_.Path("original.m2t");
  ASSERT_TRUE(RunFfmpeg(std::string(kPicture) + kSound +
                        "-c:v mpeg2video -g 12 -bf 2 -b:v 1M -c:a mp2 -f mpegts " + original));
  const std::string folder = "hdv/VIDEO/HVR/";
  const auto parts = CutStream(original, 188, {37, 50, 133});
  for (std::size_t i = 0; i < parts.size(); ++i) {
    tree_.File(folder + "00_0012_2014-01-31_10153" + std::to_string(i) + ".M2T", parts[i]);
  }
  const std::string list = WriteList(tree_.Path("hdv"), "00_0012_2014-01-31_101530.M2T", "sonyhdv");
  ExpectSteps(list);
  ExpectSamePictures(list, original);
}

TEST_F(JoinPlayback, MoviesWithReorderedPictures) {
  const std::string original = tree_.Path("original.mp4");
  ASSERT_TRUE(RunFfmpeg(std::string(kPicture) + kSound + kAvc + "-c:a aac " + original));
  // Fragmented ones have their samples in fragments, partly or all of them.
  for (const std::string flags :
       {"faststart", "frag_keyframe", "frag_keyframe+empty_moov+delay_moov"}) {
    SCOPED_TRACE(flags);
    const std::string clips = tree_.Folder(flags + "/CONTENTS/CLIPS001") + "/";
    ASSERT_TRUE(RunFfmpeg("-i " + original + " -c copy -f segment -segment_times 3,6 " +
                          "-segment_format_options movflags=" + flags +
                          " -reset_timestamps 1 -segment_start_number 1 " + clips +
                          "A_0001C313A260711_101700EJ_CANON-%03d.MP4"));
    const std::string list =
        WriteList(tree_.Path(flags), "A_0001C313A260711_101700EJ_CANON-001.MP4", "canonxfavc");
    ExpectSteps(list);
    ExpectSamePictures(list, original);
  }
}

// Sound with priming samples, in a take over two clips.
TEST_F(JoinPlayback, TakesOfMovies) {
  const std::string original = tree_.Path("original.mp4");
  ASSERT_TRUE(RunFfmpeg(std::string(kPicture) + kSound + kAvc + "-c:a aac " + original));
  MakeXDCAMEXCard(tree_, "ex", {{"Clip_01"}, {"Clip_02"}}, {{"Take_01", {"Clip_01", "Clip_02"}}});
  const std::string folder = tree_.Path("ex/BPAV/CLPR/");
  const std::string parts = tree_.Folder("parts") + "/";
  ASSERT_TRUE(RunFfmpeg("-i " + original + " -c copy -f segment -segment_times 5 " +
                        "-reset_timestamps 1 -segment_start_number 1 " + parts + "%d.MP4"));
  for (const std::string number : {"1", "2"}) {
    std::filesystem::rename(parts + number + ".MP4",
                            folder + "Clip_0" + number + "/Clip_0" + number + ".MP4");
  }
  const std::string list =
      WriteList(tree_.Path("ex"), folder + "Clip_01/Clip_01M01.XML", "xdcamex");
  ExpectSteps(list);
  ExpectSamePictures(list, original);
}

// QuickTime movies with uncompressed sound.
TEST_F(JoinPlayback, ChaptersOfQuickTimeMovies) {
  const std::string original = tree_.Path("original.mov");
  ASSERT_TRUE(RunFfmpeg(std::string(kPicture) + kSound + kAvc + "-c:a pcm_s16le " + original));
  const std::string folder = tree_.Folder("gopro/DCIM/100GOPRO") + "/";
  ASSERT_TRUE(RunFfmpeg("-i " + original + " -map 0:v -map 0:a -c copy -f segment " +
                        "-segment_times 2,6 -reset_timestamps 1 -segment_start_number 1 " + folder +
                        "GX0%d0001.MOV"));
  const std::string list = WriteList(tree_.Path("gopro"), "100GOPRO/GX010001", "dcim");
  ExpectSteps(list);
  ExpectSamePictures(list, original);
}

TEST_F(JoinPlayback, LongGroupMxf) {
  const std::string original = tree_.Path("original.mxf");
  const std::string clip = tree_.Folder("canonxf/CONTENTS/CLIPS001/AA0001") + "/AA0001";
  tree_.File("canonxf/CONTENTS/CLIPS001/INDEX.MIF", "index");
  // Copies with closed groups: of an open group a copy loses the first pictures.
  ASSERT_TRUE(RunFfmpeg(std::string(kPicture) + kSound +
                        "-flags +cgop -sc_threshold 1000000000 -c:v mpeg2video -g 25 -bf 2 -b:v 1M "
                        "-c:a pcm_s16le -f segment -segment_times 2,5 -segment_start_number 1 "
                        "-segment_format mxf -reset_timestamps 1 " +
                        clip + "%02d.MXF"));
  ASSERT_TRUE(RunFfmpeg(std::string(kPicture) + kSound +
                        "-flags +cgop -sc_threshold 1000000000 -c:v mpeg2video -g 25 -bf 2 -b:v 1M "
                        "-c:a pcm_s16le " +
                        original));
  const std::string list = WriteList(tree_.Path("canonxf"), "AA000101", "canonxf");
  ExpectSteps(list);
  ExpectSamePictures(list, original);
  EXPECT_NEAR(TotalSeconds(list), 8, 0.000002);
}

// The picture and each sound channel are files of their own, on two cards.
TEST_F(JoinPlayback, TracksInSeparateFiles) {
  const std::string original = tree_.Path("original.mxf");
  const std::string media = std::string(kPicture) + kSound;
  const std::string picture = "-map 0:v -c:v mpeg2video -g 1 -qscale:v 2 ";
  ASSERT_TRUE(RunFfmpeg(media + picture + original));
  auto clips = P2Shot({"0001AA", "0002BB", "0003CC"}, "shot");
  const int starts[] = {0, 75, 120, 200};
  for (std::size_t i = 0; i < clips.size(); ++i) {
    const std::string card = i < 2 ? "cards/one" : "cards/two";
    if (i != 1) MakeP2Card(tree_, card);
    clips[i].frames = starts[i + 1] - starts[i];
    AddP2Clip(tree_, card, clips[i]);
    const std::string contents = tree_.Path(card) + "/CONTENTS/";
    const auto frames =
        "start_frame=" + std::to_string(starts[i]) + ":end_frame=" + std::to_string(starts[i + 1]);
    ASSERT_TRUE(RunFfmpeg(media + "-vf trim=" + frames + ",setpts=PTS-STARTPTS " + picture +
                          contents + "VIDEO/" + clips[i].id + ".MXF"));
    const auto samples = "start=" + std::to_string(starts[i] / 25.0) +
                         ":end=" + std::to_string(starts[i + 1] / 25.0);
    for (const char* channel : {"00", "01"}) {
      ASSERT_TRUE(RunFfmpeg(media + "-map 1:a -af atrim=" + samples +
                            ",asetpts=PTS-STARTPTS -c:a pcm_s16le -f mxf_opatom " + contents +
                            "AUDIO/" + clips[i].id + channel + ".MXF"));
    }
  }
  const std::string list = WriteList(tree_.Path("cards/one"), "0001AA", "p2");
  ExpectSteps(list);
  ExpectSamePictures(list, original);
  for (const std::string end : {".ffconcat", ".a1.ffconcat", ".a2.ffconcat"}) {
    EXPECT_NEAR(TotalSeconds(tree_.Path("lists/shot" + end)), 8, 0.000003) << end;
  }
  EXPECT_FALSE(PacketTimes(Input(tree_.Path("lists/shot.a2.ffconcat")), "a:0").empty());
}

}  // namespace
