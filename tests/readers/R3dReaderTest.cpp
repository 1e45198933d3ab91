// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "support/TempTree.h"
#include "xmp/readers/R3dReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::Facts;
using sorvik_test::ReadDamaged;
using sorvik_test::ReadSample;
using sorvik_test::ReadWith;
using sorvik_test::TempTree;
using sorvik_test::TextFacts;

Bytes Entry(unsigned tag, const Bytes& data) {
  return Bytes().U16(data.size() + 4).U16(tag).Add(data);
}
Bytes Directory() {
  Bytes b;
  b.Add(Entry(0x1000, Bytes("00:00:10:00")));  // edge timecode
  b.Add(Entry(0x1001, Bytes("10:11:12:13")));  // time of day
  b.Add(Entry(0x1005, Bytes("20210304050607")));
  b.Add(Entry(0x1006, Bytes("102-1AB-234")));                         // serial number
  b.Add(Entry(0x1019, Bytes("A"))).Add(Entry(0x101A, Bytes("001")));  // camera, reel
  b.Add(Entry(0x101B, Bytes("002")));                                 // take
  b.Add(Entry(0x1025, Bytes("30.7.0")));                              // firmware
  b.Add(Entry(0x1036, Bytes("16:9")));                                // display aspect
  b.Add(Entry(0x1071, Bytes("RED ONE")));                             // model
  return b.Add(Entry(0x200D, Bytes().U32(0x45AF0000)));               // 5600.0 kelvin
}

// Head, one frame with the directory, the end block.
Bytes FirstGeneration(const std::string& end = "REOB", std::uint32_t frames = 48) {
  Bytes b;
  b.U32(324).Text("RED1").U16(0x0200).Text("R1").U32(240000).U32(1).PadTo(0x34);
  b.U32(4096).U32(2304).U16(0).U16(24000).U16(1001).U8(2);  // size, rate, channels
  b.Text("A001_C002_0304ZZ_001.R3D").PadTo(324);
  Bytes frame;
  frame.U32(1000).Text("REDV").PadTo(0x22).U16(Directory().size()).Add(Directory()).PadTo(1000);
  b.Add(frame);
  return b.U32(56).Text(end).Fill(16).U32(frames).U32(0).Fill(24);
}
Bytes SecondGeneration() {
  Bytes b;
  b.U32(1160).Text("RED2").U16(0x0510).Text("R2").U32(0).Fill(32, 0xAB).PadTo(0x40);
  b.U8(1).U8(1).U8(1).U8(0);                                // numbers of records
  b.Text("rdi").U8(1).U32(0).U32(5120).U32(2560).U16(0);    // size
  b.U16(1001).U32(24000).PadTo(0x44 + 0x18 + 0x14 + 0x10);  // rate
  return b.U16(Directory().size()).Add(Directory()).PadTo(1160);
}

const char kTags[] =
    "shotDate=2021-03-04T05:06:07\n"
    "shotName=A001_C002_0304ZZ\n"
    "cameraModel=RED ONE\n"
    "Make=RED\n"
    "Model=RED ONE\n"
    "software=RED firmware 30.7.0\n"
    "SerialNumber=102-1AB-234\n"
    "WhiteBalance=5600K\n";

TEST(R3dReader, ReadsTheFirstGeneration) {
  const auto result = ReadWith(kR3dReader, FirstGeneration().str());
  EXPECT_TRUE(result.recognised);
  EXPECT_EQ(Facts(result), std::string("CreateDate=2021-03-04T05:06:07\n"
                                       "CreatorTool=RED firmware 30.7.0\n"
                                       "videoFrameRate=23.976\n"
                                       "videoPixelAspectRatio=1/1\n"
                                       "videoCompressor=REDCODE\n"
                                       "audioSampleType=24Int\n"
                                       "audioChannelType=Stereo\n"
                                       "audioCompressor=PCM\n") +
                               kTags +
                               "videoFrameSize=4096x2304 pixel\n"
                               "startTimecode=10:11:12:13 23976Timecode\n"
                               "duration=48 @ 1001/24000\n");
  EXPECT_EQ(TextFacts(result), "camera=A\ntapeName=A001\nshotNumber=002\ntakeNumber=002\n");
  EXPECT_EQ(result.Field("altTimecode", kNsDM, "timeValue"), "00:00:10:00");
}

TEST(R3dReader, ReadsTheEndOfALargeSegmentOnlyForItsDuration) {
  Bytes head = FirstGeneration().Cut(1324);
  const std::string file =
      head.Fill(2'000'000).U32(56).Text("REOF").Fill(16).U32(48).U32(0).Fill(24).str();
  const auto all = ReadWith(kR3dReader, file);
  EXPECT_EQ(all.Field("duration", kNsDM, "value"), "48");
  EXPECT_EQ(all.reads, 1);
  EXPECT_EQ(all.longestRead, 56u);
  EXPECT_EQ(ReadWith(kR3dReader, file, {}, WantedProperties::None()).reads, 0);

  const auto frames = [](const std::string& end, std::uint32_t count) {
    return ReadWith(kR3dReader, FirstGeneration(end, count).str())
        .Field("duration", kNsDM, "value");
  };
  EXPECT_EQ(frames("REDA", 48), "") << "a truncated segment";
  EXPECT_EQ(frames("REOS", 0), "");
  EXPECT_EQ(frames("REOS", 0x10000000), "") << "more frames than fit into the file";
}

TEST(R3dReader, ReadsTheSecondGeneration) {
  const auto result = ReadWith(kR3dReader, SecondGeneration().str());
  std::string identifier;
  while (identifier.size() < 64) identifier += "ab";
  EXPECT_EQ(result.Get(kNsDC, "identifier"), identifier);
  EXPECT_EQ(result.Get(kNsDM, "videoFrameRate"), "23.976");
  EXPECT_EQ(result.Field("videoFrameSize", kNsDimensions, "w"), "5120");
  EXPECT_EQ(result.Get(kNsDM, "videoPixelAspectRatio"), "89/100")
      << "the display aspect 16:9 differs from that of the stored size";
  EXPECT_EQ(result.Get(kNsAux, "SerialNumber"), "102-1AB-234");
  EXPECT_EQ(result.Field("duration", kNsDM, "value"), "");
}

TEST(R3dReader, FindsADirectoryAtAnotherOffset) {
  Bytes moved;
  moved.U32(1160).Text("RED2").PadTo(0x300).Add(Directory()).PadTo(1160);
  EXPECT_EQ(ReadWith(kR3dReader, moved.str()).Get(kNsTIFF, "Model"), "RED ONE");
}

TEST(R3dReader, ReadsThePacketOfTheRmdFile) {
  TempTree tree;
  const std::string segment = tree.File("A001_C002_0304ZZ_002.R3D", FirstGeneration().str());
  EXPECT_EQ(ReadWith(kR3dReader, FirstGeneration().str(), segment).output.packet, "");
  const std::string looks = "<looks><x:xmpmeta a='1'>text</x:xmpmeta><more/></looks>";
  const std::string path = tree.File("A001_C002_0304ZZ.RMD", looks);
  EXPECT_EQ(ReadWith(kR3dReader, FirstGeneration().str(), segment).output.packet,
            "<x:xmpmeta a='1'>text</x:xmpmeta>");

  const auto itself = ReadWith(kRmdReader, looks, path);
  EXPECT_TRUE(itself.recognised);
  EXPECT_EQ(itself.output.packet, "<x:xmpmeta a='1'>text</x:xmpmeta>");
  EXPECT_EQ(ReadWith(kRmdReader, "<rdf:RDF>text", path).output.packet, "");
}

TEST(R3dReader, SurvivesTruncationAndCorruption) {
  ReadDamaged(kR3dReader, FirstGeneration().str());
  ReadDamaged(kR3dReader, SecondGeneration().str());
}

TEST(R3dReader, MatchesExiftoolOnSamples) {
  const auto camera = ReadSample("red/exiftool-Red.r3d");
  const auto first = ReadSample("red/synthetic-RED1-2frames.r3d");
  if (!camera || !first) GTEST_SKIP() << "samples not found";
  // Our own identifier: the bytes that are equal in all blocks of the recording.
  EXPECT_EQ(Facts(ReadWith(kR3dReader, *camera)),
            "identifier=0acb842967bb46f68555cffce5f0777b02b094cb1c33433ca22a8d3adbd2cc93\n"
            "CreateDate=2016-01-18T21:35:55\n"
            "CreatorTool=RED firmware 6.2.34\n"
            "videoFrameRate=23.976\n"
            "videoPixelAspectRatio=1/1\n"
            "videoCompressor=REDCODE\n"
            "shotDate=2016-01-18T21:35:55\n"
            "shotName=A106_C037_0118G5\n"
            "cameraModel=S-WEAPON\n"
            "Make=RED\n"
            "Model=S-WEAPON\n"
            "software=RED firmware 6.2.34\n"
            "SerialNumber=130-246-CE5\n"
            "WhiteBalance=4800K\n"
            "videoFrameSize=5120x2560 pixel\n"
            "startTimecode=21:36:16:18 23976Timecode\n");
  const auto frames = ReadWith(kR3dReader, *first);
  EXPECT_EQ(frames.Field("duration", kNsDM, "value"), "2");
  EXPECT_EQ(frames.Get(kNsAux, "SerialNumber"), "102-1AB-234");
}

}  // namespace
