// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "xmp/readers/RmfReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::Facts;
using sorvik_test::ReadDamaged;
using sorvik_test::ReadSample;
using sorvik_test::ReadWith;

Bytes Frame(const std::string& model) {
  Bytes b;
  b.Text("XPDS").PadTo(0x800).Text("Canon").PadTo(0x829);  // magic, maker
  b.U16LE(2160).U16LE(4096).PadTo(0x865);                  // height, width
  return b.Text(model).PadTo(0x900);
}

TEST(RmfReader, ReadsAFrame) {
  const std::string facts =
      "videoPixelDepth=Other\n"
      "videoCompressor=Canon RAW\n"
      "Make=Canon\n"
      "Model=EOS C500\n"
      "videoFrameSize=4096x2160 pixel\n";
  for (const char* model : {"EOS C500", "Canon EOS C500"}) {
    const auto result = ReadWith(kRmfReader, Frame(model).str());
    EXPECT_TRUE(result.output.hasNative);
    EXPECT_EQ(Facts(result), facts);
  }
  EXPECT_EQ(ReadWith(kRmfReader, Frame("Canonet").str()).Get(kNsTIFF, "Model"), "Canonet");
}

TEST(RmfReader, SurvivesTruncationAndCorruption) {
  ReadDamaged(kRmfReader, Frame("EOS").str());
  EXPECT_FALSE(ReadWith(kRmfReader, "XPD").recognised);
}

TEST(RmfReader, ReadsASample) {
  const auto bytes = ReadSample("rmf/synthetic-XPDS.rmf");
  if (!bytes) GTEST_SKIP() << "samples not found";
  const auto result = ReadWith(kRmfReader, *bytes);
  EXPECT_EQ(result.Field("videoFrameSize", kNsDimensions, "w"), "4096");
  EXPECT_EQ(result.Get(kNsTIFF, "Model"), "EOS C500");
}

}  // namespace
