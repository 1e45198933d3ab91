// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "xmp/readers/AriReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::Facts;
using sorvik_test::ReadDamaged;
using sorvik_test::ReadSample;
using sorvik_test::ReadWith;
using sorvik_test::TextFacts;

Bytes Frame() {
  Bytes b;
  b.Text("ARRI").Hex("12345678").U32LE(4096).U32LE(3);            // magic, header size, version
  b.U32LE(60).U32LE(2880).U32LE(1620).PadTo(0x2C);                // image block, size
  b.U32LE(2880).U32LE(1600).PadTo(0x54);                          // active size
  b.U32LE(252).U32LE(0).U32LE(3200).PadTo(0xC4);                  // content block, white balance
  b.U32LE(0x3FA66666).PadTo(0x160);                               // lens squeeze 1.3
  b.U32LE(440).PadTo(0x170).U32LE(2719).U32LE(0);                 // camera block, serial number
  b.U32LE('B').U32LE(0x20210304).U32LE(0x05060700).PadTo(0x1A4);  // letter, date, time
  b.U32LE(25000).U32LE(0x10111213).PadTo(0x29C);                  // project rate, master timecode
  b.Text("ALEXA").PadTo(0x2D0).Hex("00010203 04050607 08090A0B 0C0D0E0F");
  b.PadTo(0x4F0).U32LE(448).U8(1).PadTo(0x4F8);                        // clip block, circle take
  b.Text("B001R23J").Text("12A").PadTo(0x510).Text("3").PadTo(0x518);  // reel, scene, take
  b.Text("A Director").PadTo(0x538).Text("A Cameraman").PadTo(0x698);
  return b.Text("B001C002_210304_R23J").PadTo(4096);
}

TEST(AriReader, ReadsAFrame) {
  const auto result = ReadWith(kAriReader, Frame().str());
  EXPECT_TRUE(result.recognised);
  EXPECT_TRUE(result.output.hasNative);
  EXPECT_EQ(Facts(result),
            "identifier=03020100-0504-0706-0809-0a0b0c0d0e0f\n"
            "CreateDate=2021-03-04T05:06:07\n"
            "videoFrameRate=25\n"
            "videoPixelAspectRatio=13/10\n"
            "videoCompressor=ARRIRAW\n"
            "shotDate=2021-03-04T05:06:07\n"
            "shotName=B001C002_210304_R23J\n"
            "cameraModel=ALEXA\n"
            "Make=ARRI\n"
            "Model=ALEXA\n"
            "SerialNumber=2719\n"
            "WhiteBalance=3200K\n"
            "videoFrameSize=2880x1600 pixel\n"
            "startTimecode=10:11:12:13 25Timecode\n")
      << "no duration for a single frame";
  EXPECT_EQ(TextFacts(result),
            "camera=B\n"
            "tapeName=B001R23J\n"
            "scene=12A\n"
            "takeNumber=3\n"
            "good=True\n"
            "director=A Director\n"
            "directorPhotography=A Cameraman\n");
}

TEST(AriReader, OmitsMissingAndInvalidFacts) {
  // Blocks with a size of 0, digits above 9, impossible times.
  Bytes noClip = Frame();
  noClip.Set(0x4F0, 0, 4);
  EXPECT_EQ(TextFacts(ReadWith(kAriReader, noClip.str())), "camera=B\n");
  // Without an index the first letter of the reel names the camera.
  for (const auto& [reel, camera] : {std::pair('A', "A"), std::pair('Z', "Z"), std::pair('@', ""),
                                     std::pair('[', ""), std::pair('1', "")}) {
    Bytes noIndex = Frame();
    noIndex.Set(0x178, 0, 4).Set(0x4F8, static_cast<unsigned char>(reel), 1);
    EXPECT_EQ(ReadWith(kAriReader, noIndex.str()).Get(kNsDM, "camera"), camera) << reel;
  }
  Bytes noDate = Frame();
  noDate.Set(0x17C, 0xAA, 1).Set(0x1AB, 0x24, 1);
  const auto result = ReadWith(kAriReader, noDate.str());
  EXPECT_EQ(result.Get(kNsXMP, "CreateDate"), "");
  EXPECT_EQ(result.Field("startTimecode", kNsDM, "timeValue"), "");
  Bytes older = Frame();
  older.Set(0x00C, 2, 1);
  EXPECT_EQ(Facts(ReadWith(kAriReader, older.str())),
            "videoCompressor=ARRIRAW\nMake=ARRI\nvideoFrameSize=2880x1600 pixel\n");
  // The lens squeeze is NaN.
  Bytes nan = Frame();
  nan.Set(0xC4, 0x0000C07F, 4);
  EXPECT_EQ(ReadWith(kAriReader, nan.str()).Get(kNsDM, "videoPixelAspectRatio"), "");
}

TEST(AriReader, SurvivesTruncationAndCorruption) { ReadDamaged(kAriReader, Frame().str()); }

TEST(AriReader, ReadsASample) {
  const auto bytes = ReadSample("ari/synthetic-rdd30-v3-2398.ari");
  if (!bytes) GTEST_SKIP() << "samples not found";
  const auto result = ReadWith(kAriReader, *bytes);
  EXPECT_EQ(result.Get(kNsDM, "videoFrameRate"), "23.976");
  EXPECT_EQ(result.Get(kNsDM, "shotName"), "A001C002_210304_R23J");
  EXPECT_EQ(result.Field("startTimecode", kNsDM, "timeFormat"), "23976Timecode");
}

}  // namespace
