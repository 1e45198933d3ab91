// SPDX-License-Identifier: MIT
// MPEG program streams: codecs, duration by time stamps, and the record of a hard-disk camera.
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "support/TempTree.h"
#include "xmp/readers/ProgramStreamReader.h"

namespace sorvik_test {
namespace {

using namespace Sorvik::xmp;

Bytes Pack2() { return Bytes().Hex("000001BA 44 00 04 00 04 01 00 00 03 F8"); }
Bytes Pack1() { return Bytes().Hex("000001BA 21 00 01 00 01 80 00 01"); }

Bytes Stamp(std::uint64_t time) {
  return Bytes()
      .U8(0x21 | (time >> 29 & 0x0E))
      .U16((time >> 14 & 0xFFFE) | 1)
      .U16((time << 1 & 0xFFFE) | 1);
}
Bytes Packet2(unsigned id, std::uint64_t time, const Bytes& data) {
  const Bytes stamp = Stamp(time);
  return Bytes().U24(1).U8(id).U16(data.size() + 8).Hex("81 80 05").Add(stamp).Add(data);
}
Bytes Packet1(unsigned id, std::uint64_t time, const Bytes& data) {
  // Stuffing, buffer size, time stamp.
  return Bytes().U24(1).U8(id).U16(data.size() + 9).Hex("FF FF 60 20").Add(Stamp(time)).Add(data);
}

// 720 x 576, 4:3 at 25 frames per second, bottom field first; not progressive.
const Bytes kMPEG2 = Bytes().Hex(
    "000001B3 2D0240 23 FFFFE018 000001B5 14 82 00 01 00 00 000001B8 00 08 00 40"
    "00000100 000FFFF8 000001B5 8F FF F3 00 00");
// 352 x 288 with the samples of a video disc.
const Bytes kMPEG1 = Bytes().Hex("000001B3 160120 83 FFFFE018 000001B8 00080040 00000100 000FFFF8");
const Bytes kAudio = Bytes().Hex("FFFC A400");  // layer II, 48 kHz, stereo

std::string File2(const Bytes& sound, unsigned soundId, int frames = 50) {
  Bytes file;
  for (int i = 0; i < frames; ++i) {
    file.Add(Pack2()).Add(Packet2(0xE0, 90000u + 3600u * static_cast<unsigned>(i),
                                  i == 0 ? kMPEG2 : Bytes().Fill(2000, 0x55)));
    if (i == 0) file.Add(Packet2(soundId, 90000, sound));
  }
  return file.str();
}

TEST(ProgramStreamReader, ReadsMPEG2) {
  const ReadResult result = ReadWith(kProgramStreamReader, File2(kAudio, 0xC0));
  EXPECT_TRUE(result.recognised);
  EXPECT_EQ(Facts(result),
            "videoFrameRate=25\nvideoPixelDepth=8Int\nvideoPixelAspectRatio=16/15\n"
            "videoCompressor=MPEG-2\nvideoFieldOrder=Lower\naudioSampleRate=48000\n"
            "audioSampleType=Compressed\naudioChannelType=Stereo\naudioCompressor=MPEG\n"
            "fileDataRate=" +
                result.Get(kNsDM, "fileDataRate") +
                "\nvideoFrameSize=720x576 pixel\nstartTimecode=00:00:00:00 25Timecode\n"
                "duration=50 @ 1/25\n");
  EXPECT_EQ(result.reads, 1);  // the end
}

TEST(ProgramStreamReader, ReadsPrivateStreamsOfDiscs) {
  const ReadResult ac3 = ReadWith(kProgramStreamReader,
                                  File2(Bytes().Hex("80 01 0001 0B77 0000 14 40 4000 0000"), 0xBD));
  EXPECT_EQ(ac3.Get(kNsDM, "audioCompressor"), "AC3");
  EXPECT_EQ(ac3.Get(kNsDM, "audioSampleRate"), "48000");
  const ReadResult lpcm =
      ReadWith(kProgramStreamReader, File2(Bytes().Hex("A0 01 0004 00 91 80 0000"), 0xBD));
  EXPECT_EQ(lpcm.Get(kNsDM, "audioCompressor"), "PCM");
  EXPECT_EQ(lpcm.Get(kNsDM, "audioSampleRate"), "96000");
  EXPECT_EQ(lpcm.Get(kNsDM, "audioSampleType"), "24Int");
  EXPECT_EQ(lpcm.Get(kNsDM, "audioChannelType"), "Stereo");
}

TEST(ProgramStreamReader, ReadsMPEG1) {
  Bytes file = Pack1().Add(Packet1(0xE0, 90000, kMPEG1)).Add(Packet1(0xC0, 90000, kAudio));
  file.Add(Pack1()).Add(Packet1(0xE0, 90000 + 9 * 3600, Bytes().Fill(100, 0x55)));
  const ReadResult result = ReadWith(kProgramStreamReader, file.str());
  EXPECT_EQ(result.Get(kNsDM, "videoCompressor"), "MPEG-1");
  EXPECT_EQ(result.Get(kNsDM, "videoFieldOrder"), "Progressive");
  EXPECT_EQ(result.Get(kNsDM, "videoPixelAspectRatio"), "10000/9157");
  EXPECT_EQ(result.Get(kNsDM, "audioChannelType"), "Stereo");
  EXPECT_EQ(result.Field("duration", kNsDM, "value"), "10");
}

TEST(ProgramStreamReader, TakesTheDateOfTheRecord) {
  TempTree tree;
  const std::string moi = Bytes().Text("V6").U32(0x140).U16(2011).Hex("05 0F 11 3A BB80").str();
  tree.File("MOV001.MOI", Bytes().Text(moi).PadTo(128).U8(0x54).str());
  const std::string file = File2(kAudio, 0xC0, 2);
  EXPECT_EQ(ReadWith(kProgramStreamReader, file, tree.Path("MOV001.MOD")).Get(kNsXMP, "CreateDate"),
            "2011-05-15T17:58:48");
  EXPECT_EQ(ReadWith(kProgramStreamReader, file, tree.Path("MOV001.MOD"))
                .Get(kNsDM, "videoPixelAspectRatio"),
            "64/45")
      << "16:9, although the video says 4:3";
  EXPECT_EQ(ReadWith(kProgramStreamReader, file, tree.Path("MOV001.MPG")).Get(kNsXMP, "CreateDate"),
            "");
  tree.File("MOV002.moi", moi.substr(0, 9));
  EXPECT_EQ(ReadWith(kProgramStreamReader, file, tree.Path("MOV002.mod")).Get(kNsXMP, "CreateDate"),
            "");
}

TEST(ProgramStreamReader, SurvivesDamage) {
  Bytes file = Pack2();
  file.Add(Packet2(0xE0, 90000, kMPEG2)).Add(Packet2(0xC0, 90000, kAudio)).Add(Pack2());
  ReadDamaged(kProgramStreamReader, file.str());
}

}  // namespace
}  // namespace sorvik_test
