// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/ReadWith.h"
#include "xmp/readers/SvgReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::ReadWith;

TEST(SvgReader, ReadsABareMetadataElement) {
  const std::string padding = "<path d='" + std::string(100'000, 'M') + "'/>";
  const auto packet = [](const std::string& content) {
    const auto result =
        ReadWith(kSvgReader, "<?xml version='1.0'?>\n<!-- c --><svg:svg xmlns:svg='s'>" + content +
                                 "</svg:svg>");
    EXPECT_TRUE(result.recognised);
    return result.output.packet;
  };
  const std::string xmp = "<x:xmpmeta xmlns:x='adobe:ns:meta/'><a/></x:xmpmeta>";
  EXPECT_EQ(packet(padding + "<metadata>" + xmp + "</metadata>"), xmp);
  EXPECT_EQ(packet("<metadata><?xpacket begin=''?>" + xmp + "<?xpacket end='w'?></metadata>"), xmp);
  EXPECT_EQ(packet("<xmpmeta><a/></xmpmeta>"), "<xmpmeta><a/></xmpmeta>");
  EXPECT_EQ(packet("<text>xmpmeta</text><a b='xmpmeta'/>" + xmp), xmp) << "not a name";
  EXPECT_EQ(packet("<x:xmpmeta><a/>"), "") << "truncated";
  EXPECT_EQ(packet("<metadata/>"), "");
  EXPECT_FALSE(ReadWith(kSvgReader, "<html/>").recognised);
}

}  // namespace
