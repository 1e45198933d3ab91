// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "xmp/readers/GifReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::ReadSample;
using sorvik_test::ReadWith;

Bytes Start() { return Bytes().Text("GIF89a").Fill(7); }  // signature, screen descriptor
Bytes Extension(const std::string& packet) {
  Bytes b;
  b.U8(0x21).U8(0xFF).U8(11).Text("XMP DataXMP").Text(packet).U8(1);
  for (int value = 255; value >= 0; --value) b.U8(value);
  return b.U8(0);
}

TEST(GifReader, FindsThePacketAtStartAndEnd) {
  const Bytes picture = Bytes().Fill(200'000, 0x55);
  const std::string longPacket = "<p>" + std::string(90'000, ' ') + "</p>";
  const auto packet = [](const Bytes& file, int reads) {
    const auto result = ReadWith(kGifReader, file.str());
    EXPECT_TRUE(result.recognised);
    EXPECT_EQ(result.reads, reads);
    return result.output.packet;
  };
  EXPECT_EQ(packet(Start().Add(Extension("<p/>")).Add(picture), 0), "<p/>");
  EXPECT_EQ(packet(Start().Add(picture).Add(Extension("<p/>")).U8(0x3B), 1), "<p/>");
  EXPECT_EQ(packet(Start().Add(Extension(longPacket)).Add(picture), 1), longPacket);
  EXPECT_EQ(packet(Start().Add(picture).Add(Extension(longPacket)).U8(0x3B), 2), longPacket);
  EXPECT_EQ(packet(Start().Add(picture), 1), "");
  EXPECT_EQ(packet(Start(), 0), "");
}

TEST(GifReader, GivesTheSizeOfTheScreen) {
  const auto result = ReadWith(kGifReader, Bytes().Text("GIF89a").Hex("2C01 C800").Fill(3).str());
  EXPECT_EQ(sorvik_test::Facts(result), "videoFrameSize=300x200 pixel\n");
  EXPECT_TRUE(result.output.hasNative);
}

TEST(GifReader, IgnoresATruncatedPacket) {
  const std::string full = Start().Add(Extension("<p/>")).str();
  for (std::size_t cut = 0; cut < full.size(); ++cut) {
    const auto packet = ReadWith(kGifReader, full.substr(0, cut)).output.packet;
    EXPECT_TRUE(packet.empty() || packet == "<p/>") << cut;
  }
}

TEST(GifReader, ReadsASample) {
  const auto bytes = ReadSample("xmp/derived-exiftool-xmpDM.gif");
  if (!bytes) GTEST_SKIP() << "samples not found";
  EXPECT_TRUE(ReadWith(kGifReader, *bytes).output.packet.ends_with("<?xpacket end='w'?>"));
}

}  // namespace
