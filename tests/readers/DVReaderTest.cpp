// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "xmp/readers/DVFrame.h"
#include "xmp/readers/DVReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::Facts;
using sorvik_test::ReadSample;
using sorvik_test::ReadWith;

struct Packs {
  std::string timecode = "13 60 82 80 C0";  // 00:00:02;20
  std::string date = "62 FF C8 E7 24";      // 2024-07-08
  std::string time = "63 FF D8 D5 D9";      // 19:55:58
  std::string control = "61 03 80 FC FF";   // 4:3, interlaced
  std::string source = "60 FF FF 00 FF";    // 525/60, 25 Mb/s
  std::string audio = "50 CF 30 C0 C0";     // 48 kHz, 16 bits
  std::string audio2 = "50 CF 3F C0 C0";    // second half: no audio
};

// One DIF sequence: header, 2 subcode, 3 VAUX, 9 x (audio, 15 video).
Bytes MakeSequence(bool pal, int number, const Packs& packs) {
  Bytes b;
  b.U8(0x1F).U8(0x07 | number << 4).U8(0).U8(pal ? 0xBF : 0x3F).U8(0x78).PadTo(80, 0xFF);
  for (int i = 0; i < 2; ++i) {
    Bytes block;
    block.U8(0x3F).U8(0x07).U8(i);
    for (int sync = 0; sync < 6; ++sync) block.U24(0xFFFFFF).Hex(packs.timecode);
    b.Add(block.PadTo(80, 0xFF));
  }
  for (int i = 0; i < 3; ++i) {
    Bytes block;
    block.U8(0x5F).U8(0x07).U8(i);
    block.Hex(packs.source).Hex(packs.control).Hex(packs.date).Hex(packs.time);
    b.Add(block.PadTo(80, 0xFF));
  }
  for (int i = 0; i < 9; ++i) {
    Bytes block;
    block.U8(0x7F).U8(0x07).U8(i).Hex(number * 2 < (pal ? 12 : 10) ? packs.audio : packs.audio2);
    b.Add(block.PadTo(80, 0));
    for (int video = 0; video < 15; ++video) b.U8(0x9F).Fill(79);
  }
  return b;
}

Bytes MakeFrame(bool pal, const Packs& packs = {}) {
  Bytes b;
  for (int i = 0; i < (pal ? 12 : 10); ++i) b.Add(MakeSequence(pal, i, packs));
  return b;
}

TEST(DVReader, ReadsAFrameOf525Lines) {
  const Bytes file = MakeFrame(false).Add(MakeFrame(false)).Add(MakeFrame(false));
  const auto result = ReadWith(kDVReader, file.str());
  EXPECT_TRUE(result.recognised);
  EXPECT_TRUE(result.output.hasNative);
  EXPECT_EQ(result.reads, 0) << "the head is sufficient";
  EXPECT_EQ(Facts(result),
            "CreateDate=2024-07-08T19:55:58\n"
            "videoFrameRate=29.97\n"
            "videoPixelDepth=8Int\n"
            "videoPixelAspectRatio=10/11\n"
            "videoCompressor=DV\n"
            "videoFieldOrder=Lower\n"
            "audioSampleRate=48000\n"
            "audioSampleType=16Int\n"
            "audioChannelType=Stereo\n"
            "audioCompressor=PCM\n"
            "shotDate=2024-07-08T19:55:58\n"
            "videoFrameSize=720x480 pixel\n"
            "startTimecode=00;00;02;20 2997DropTimecode\n"
            "duration=3 @ 1001/30000\n");
}

TEST(DVReader, ReadsAWideFrameOf625LinesAtFiftyMegabits) {
  Packs packs;
  packs.source = "60 FF FF 24 FF";
  packs.control = "61 03 82 FC FF";
  packs.timecode = "13 64 84 80 C0";  // the drop bit has no meaning here
  packs.date = "62 FF D6 E2 95";      // 1995
  const Bytes file = MakeFrame(true, packs).Add(MakeFrame(true, packs));
  const auto result = ReadWith(kDVReader, file.str());
  EXPECT_EQ(result.Get(kNsDM, "videoCompressor"), "DVCPRO 50");
  EXPECT_EQ(result.Get(kNsDM, "videoPixelAspectRatio"), "16/11");
  EXPECT_EQ(result.Get(kNsDM, "shotDate").substr(0, 10), "1995-02-16");
  EXPECT_EQ(result.Field("startTimecode", kNsDM, "timeValue"), "00:00:04:24");
  EXPECT_EQ(result.Field("duration", kNsDM, "value"), "1") << "two channels of sequences a frame";
}

TEST(DVReader, DistinguishesTwoChannelsOfTwelveBitsFromFour) {
  Packs packs;
  packs.audio = "50 CF 30 C0 D1";
  packs.audio2 = "50 CF 3F C0 D1";
  EXPECT_EQ(ReadWith(kDVReader, MakeFrame(false, packs).str()).Get(kNsDM, "audioChannelType"),
            "Stereo");
  packs.audio2 = "50 CF 30 C0 D1";
  const auto four = ReadWith(kDVReader, MakeFrame(false, packs).str());
  EXPECT_EQ(four.Get(kNsDM, "audioChannelType"), "Other");
  EXPECT_EQ(four.Get(kNsDM, "audioSampleType"), "Other");
}

TEST(DVReader, CompletesADamagedFirstFrameFromTheNext) {
  Packs none;
  none.timecode = none.date = none.time = none.control = none.source = none.audio = none.audio2 =
      "FF FF FF FF FF";
  const Bytes file = MakeFrame(false, none).Add(MakeFrame(false));
  const auto result = ReadWith(kDVReader, file.str());
  EXPECT_EQ(result.reads, 1);
  EXPECT_EQ(result.Get(kNsDM, "shotDate"), "2024-07-08T19:55:58");
  EXPECT_EQ(result.Get(kNsDM, "videoPixelAspectRatio"), "10/11");
  EXPECT_EQ(result.Field("startTimecode", kNsDM, "timeValue"), "")
      << "must be that of the first frame";
  const auto named = ReadWith(kDVReader, MakeFrame(false, none).str(),
                              "/card/VIDEO/HVR/00_0001_2009-03-14_101530.DV");
  EXPECT_EQ(named.Get(kNsDM, "shotDate"), "2009-03-14T10:15:30");
}

TEST(DVReader, ParsesRecorderFileNames) {
  EXPECT_FALSE(DateFromRecorderName("/a/00_0001_0000-00-00_000000.M2T")) << "clock not set";
  EXPECT_FALSE(DateFromRecorderName("/a/00_0001_2009-13-14_101530.M2T"));
  EXPECT_FALSE(DateFromRecorderName("/00_0001_2009-03-14_101530/clip.M2T"));
  EXPECT_FALSE(DateFromRecorderName(""));
}

TEST(DVReader, SurvivesTruncationAndCorruption) {
  EXPECT_FALSE(ReadWith(kDVReader, "").recognised);
  EXPECT_FALSE(ReadWith(kDVReader, std::string(200000, '\0')).recognised);
  Packs bad;
  bad.timecode = "13 3F 7F 7F 3F";
  bad.date = "62 FF 00 00 24";
  bad.time = "63 FF FA D5 D9";
  bad.audio = "50 00 00 1F 3F";
  const Bytes full = MakeFrame(false, bad);
  const auto result = ReadWith(kDVReader, full.str());
  EXPECT_EQ(result.Get(kNsDM, "shotDate"), "");
  EXPECT_EQ(result.Field("startTimecode", kNsDM, "timeValue"), "");
  EXPECT_EQ(result.Get(kNsDM, "videoFrameRate"), "29.97") << "other facts are kept";
  for (std::size_t size = 0; size < 1000; ++size) {
    const auto cut = ReadWith(kDVReader, MakeFrame(true).str().substr(0, size));
    EXPECT_EQ(cut.recognised, size >= 5);
    EXPECT_EQ(cut.Field("duration", kNsDM, "value"), "") << "no complete frame";
  }
}

// Date, timecode, aspect and audio as printed by independent readers. Known differences: sample
// aspect ratios are those of BT.601 (others print 64:45 or 32:27); a second pair of channels marked
// as unused isn't counted; in a frame with damaged packs the majority counts, where others print
// nothing.
struct Sample {
  const char* file;
  const char* date;
  const char* timecode;
  const char* aspect;
  const char* audio;
  const char* frames;
};

class DVSamples : public testing::TestWithParam<Sample> {};

TEST_P(DVSamples, MatchIndependentReaders) {
  const Sample& sample = GetParam();
  const auto bytes = ReadSample(std::string("hdv/").append(sample.file));
  if (!bytes) GTEST_SKIP() << "samples not found";
  const auto result = ReadWith(kDVReader, *bytes);
  EXPECT_TRUE(result.recognised);
  EXPECT_EQ(result.Get(kNsDM, "shotDate"), sample.date);
  EXPECT_EQ(result.Field("startTimecode", kNsDM, "timeValue"), sample.timecode);
  EXPECT_EQ(result.Get(kNsDM, "videoPixelAspectRatio"), sample.aspect);
  EXPECT_EQ(result.Get(kNsDM, "audioSampleRate") + " " + result.Get(kNsDM, "audioChannelType"),
            sample.audio);
  EXPECT_EQ(result.Field("duration", kNsDM, "value"), sample.frames);
}

INSTANTIATE_TEST_SUITE_P(
    Recorded, DVSamples,
    testing::Values(Sample{"DV.dv", "2010-02-16T21:36:28", "00:00:04:24", "16/11", "32000 Other",
                           ""},
                    Sample{"JohnstonJ-video-tools/tests/dv/frame/testdata/sony_perfect.dv",
                           "2024-07-08T19:55:58", "00;00;02;20", "10/11", "32000 Stereo", "1"},
                    Sample{"JohnstonJ-video-tools/tests/dv/frame/testdata/sony_head_clog.dv",
                           "2000-12-03T10:15:57", "00;00;00;12", "10/11", "32000 Stereo", "1"},
                    Sample{"JohnstonJ-video-tools/tests/dv/frame/testdata/sony_drop_frame.dv", "",
                           "", "", " ", "1"},
                    Sample{"SYNTHETIC/raw-pal-16x9-synthetic.dv", "2014-01-31T10:15:30",
                           "10:11:12:13", "16/11", "48000 Stereo", "2"}));

}  // namespace
