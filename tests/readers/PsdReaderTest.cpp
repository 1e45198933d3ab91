// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "support/TiffBytes.h"
#include "xmp/readers/PsdReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::ReadWith;

Bytes Resource(unsigned id, const std::string& data) {
  Bytes b;
  b.Text("8BIM").U16(id).U16(0).U32(data.size()).Text(data);
  return b.Fill(data.size() % 2);
}
// Signature, version, reserved, channels, height, width, depth, mode; colour data; resources.
std::string Psd(const Bytes& resources, unsigned version = 1) {
  Bytes b;
  b.Text("8BPS").U16(version).Fill(6).U16(3).U32(200).U32(300).U16(16).U16(3);
  b.U32(5).Fill(5).U32(resources.size()).Add(resources);
  return b.str();
}

TEST(PsdReader, ReadsItsOwnResourcesOnly) {
  sorvik_test::TiffBytes t;
  const std::string embedded = "<?xpacket begin=''?><other/><?xpacket end='w'?>";
  const std::string iptc = Bytes().Hex("1C 02 05 0005").Text("Title").str();
  const std::string file =
      Psd(Bytes()
              .Add(Resource(1036, "thumbnail " + embedded))
              .Add(Resource(1058, t.File({t.Ascii(271, "Maker"), t.Shorts(274, {6})})))
              .Add(Resource(1060, "<own/>"))
              .Add(Resource(1028, iptc))) +
      embedded;
  const auto result = ReadWith(kPsdReader, file);
  EXPECT_TRUE(result.recognised);
  EXPECT_EQ(result.output.packet, "<own/>");
  EXPECT_EQ(sorvik_test::Facts(result),
            "videoPixelDepth=16Int\nMake=Maker\nvideoFrameSize=300x200 pixel\n");
  EXPECT_EQ(sorvik_test::TextFacts(result), "title=Title\n");

  const auto large = ReadWith(kPsdReader, Psd(Resource(1036, embedded), 2) + embedded);
  EXPECT_TRUE(large.recognised);
  EXPECT_EQ(large.output.packet, "");
  sorvik_test::ReadDamaged(kPsdReader, file);
}

}  // namespace
