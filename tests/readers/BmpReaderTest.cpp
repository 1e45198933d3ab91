// SPDX-License-Identifier: MIT
// The size of bitmaps with rows in both orders.
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "xmp/readers/BmpReader.h"

namespace sorvik_test {
namespace {

using Sorvik::xmp::kBmpReader;

std::string Bitmap(std::uint32_t length, std::uint32_t height) {
  return Bytes().Text("BM").Fill(12).U32LE(length).U32LE(640u).U32LE(height).Fill(30).str();
}

TEST(BmpReader, GivesTheSize) {
  EXPECT_EQ(Facts(ReadWith(kBmpReader, Bitmap(40, 426))), "videoFrameSize=640x426 pixel\n");
  EXPECT_EQ(Facts(ReadWith(kBmpReader, Bitmap(124, 0xFFFFFE56))), "videoFrameSize=640x426 pixel\n");
  EXPECT_FALSE(ReadWith(kBmpReader, Bitmap(40, 0)).output.hasNative);
  const std::string packet = "<?xpacket begin=''?><x:xmpmeta/><?xpacket end='w'?>";
  EXPECT_EQ(ReadWith(kBmpReader, Bitmap(40, 426) + packet).output.packet, packet);
  EXPECT_FALSE(ReadWith(kBmpReader, Bitmap(1000, 426)).recognised);
  EXPECT_FALSE(ReadWith(kBmpReader, "BM").recognised);
}

}  // namespace
}  // namespace sorvik_test
