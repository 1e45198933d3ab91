// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "support/TempTree.h"
#include "xmp/readers/CanonXFReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Facts;
using sorvik_test::ReadResult;
using sorvik_test::ReadWith;
using sorvik_test::TempTree;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kClipXml[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<Clip xmlns="urn:example:clip">
  <UserMemo>
    <Title> Harbour at dusk </Title><Creator>R. Osei</Creator><Location>Pier 4</Location>
    <Description>Wide, then a pan</Description>
  </UserMemo>
  <GPS><Latitude>-33.8568</Latitude><Longitude>151.2153</Longitude><Altitude>12.5</Altitude></GPS>
</Clip>)";

// A card with one clip of three spans; the spans are not MXF files.
class CanonXFReader : public testing::Test {
 protected:
  CanonXFReader() {
    for (const char* span : {"AA000101.MXF", "AA000102.MXF", "AA000103.MXF"}) File(span);
  }
  std::string File(const std::string& name, std::string_view content = {}) const {
    return tree_.File("CONTENTS/CLIPS001/AA0001/" + name, content);
  }
  ReadResult ReadSpan(const WantedProperties& wanted = WantedProperties::All()) const {
    return ReadWith(kCanonXFReader, "no MXF", tree_.Path("CONTENTS/CLIPS001/AA0001/AA000101.MXF"),
                    wanted);
  }
  static std::vector<std::string> Relation(const ReadResult& result) {
    std::vector<std::string> items;
    std::string item;
    for (int i = 1; result.output.native.GetArrayItem(kNsDC, "relation", i, &item); ++i) {
      items.push_back(item);
    }
    return items;
  }

  TempTree tree_;
};

TEST_F(CanonXFReader, ReadsTheClipXml) {
  File("AA0001.XML", kClipXml);
  const ReadResult result = ReadSpan();
  EXPECT_TRUE(result.recognised);
  EXPECT_TRUE(result.output.hasNative);
  EXPECT_EQ(Facts(result),
            "shotName=Harbour at dusk\ncomment=Wide, then a pan\nGPSAltitude=125/10\n"
            "GPSAltitudeRef=0\nGPSLatitude=33,51.40800S\nGPSLongitude=151,12.91800E\n");
  EXPECT_EQ(result.Get(kNsDM, "shotLocation"), "Pier 4");
  std::string text;
  EXPECT_TRUE(result.output.native.GetArrayItem(kNsDC, "creator", 1, &text));
  EXPECT_EQ(text, "R. Osei");
  EXPECT_TRUE(
      result.output.native.GetLocalizedText(kNsDC, "title", "", "x-default", nullptr, &text));
  EXPECT_EQ(text, "Harbour at dusk");
  EXPECT_THAT(Relation(result), ElementsAre("AA000102", "AA000103"));
}

TEST_F(CanonXFReader, PrefersTheClipXmlToTheSpan) {
  const auto span = sorvik_test::ReadSample("mxf/gen-rdd9_422_1080i2997_df.head128k.mxf");
  if (!span) GTEST_SKIP() << "samples not found";
  File("AA0001.XML", kClipXml);
  const std::string path = File("AA000101.MXF", *span);
  const ReadResult result = ReadWith(kCanonXFReader, *span, path);
  EXPECT_EQ(result.Get(kNsDM, "videoFrameRate"), "29.97");
  EXPECT_EQ(result.Field("videoFrameSize", kNsDimensions, "w"), "1920");
  EXPECT_FALSE(result.Get(kNsDC, "identifier").empty());
  EXPECT_EQ(result.Get(kNsDM, "shotName"), "Harbour at dusk");
  EXPECT_THAT(Relation(result), ElementsAre("AA000102", "AA000103"));
}

TEST_F(CanonXFReader, ReadsAPacketOfASpanThatIsNotMXF) {
  const std::string packet =
      "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?><x:xmpmeta xmlns:x='adobe:ns:meta/'/>"
      "<?xpacket end='w'?>";
  const std::string bytes = "no MXF " + packet;
  const ReadResult result = ReadWith(kCanonXFReader, bytes, File("AA000101.MXF", bytes));
  EXPECT_FALSE(result.output.hasNative);
  EXPECT_NE(result.output.packet.find("x:xmpmeta"), std::string::npos);
}

TEST_F(CanonXFReader, RecognisesSpansByPath) {
  const std::pair<const char*, bool> cases[] = {
      {"/card/CONTENTS/CLIPS001/AA0001/AA000101.MXF", true},
      {"/card/contents/clips001/aa0001/AA000102.mxf", true},
      {"/card/CONTENTS/CLIPS001/AA0001/AA0001.MXF", false},
      {"/card/CONTENTS/CLIPS001/AA0001/AB000101.MXF", false},
      {"/card/CONTENTS/CLIPS001/AA0001/AA000101.XML", false},
      {"/card/CONTENTS/CLIPS002/AA0001/AA000101.MXF", false},
      {"/card/AA0001/AA000101.MXF", false},
      {"AA000101.MXF", false},
      {"", false},
  };
  for (const auto& [path, is] : cases) {
    EXPECT_EQ(ReadWith(kCanonXFReader, "", path, WantedProperties::None()).recognised, is) << path;
  }
}

TEST_F(CanonXFReader, FindsTheClipXmlCaseInsensitively) {
  File("aa0001.xml", "<x><CLIPTITLE>Found</CLIPTITLE></x>");
  EXPECT_EQ(Facts(ReadSpan()), "shotName=Found\n");
}

// Whether a file has metadata doesn't depend on the wanted properties, and other spans alone are no
// metadata.
TEST_F(CanonXFReader, HasMetadataOnlyFromClipXmlOrSpan) {
  EXPECT_FALSE(ReadSpan().output.hasNative);
  EXPECT_TRUE(ReadSpan().output.native.Empty());
  File("AA0001.XML", "<x><Unknown>text</Unknown><Title/></x>");
  EXPECT_FALSE(ReadSpan().output.hasNative);
  File("AA0001.XML", "<x><Title>A</Title></x>");
  const ReadResult few = ReadSpan(WantedProperties::None());
  EXPECT_TRUE(few.output.hasNative);
  EXPECT_THAT(Relation(few), IsEmpty());
}

TEST_F(CanonXFReader, SurvivesAnInvalidClipXml) {
  for (const char* xml : {"", "<Title>", "no xml", "<x><Title>A</Title></y>",
                          "<!DOCTYPE x [<!ENTITY t 'A'>]><x><Title>&t;</Title></x>"}) {
    File("AA0001.XML", xml);
    EXPECT_FALSE(ReadSpan().output.hasNative) << xml;
  }
  const std::string path = tree_.Path("CONTENTS/CLIPS001/AA0001/AA0001.XML");
  std::filesystem::remove(path);
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_FALSE(ReadSpan().output.hasNative);
}

TEST(CanonXFClipXml, ReadsTheFirstTextOfEachFact) {
  TXMPMeta native;
  EXPECT_TRUE(ReadCanonXFClipXml(
      "<x><Title/><a><ClipTitle>First</ClipTitle></a><Title>Second</Title></x>", native));
  std::string name;
  EXPECT_TRUE(native.GetProperty(kNsDM, "shotName", &name));
  EXPECT_EQ(name, "First");
}

TEST(CanonXFClipXml, DropsImpossiblePositions) {
  for (const char* text : {"90.001", "-91", "1e999", "nan", "12,5", "N12.5", "12.5N", "--1"}) {
    TXMPMeta native;
    EXPECT_FALSE(
        ReadCanonXFClipXml("<x><Latitude>" + std::string(text) + "</Latitude></x>", native))
        << text;
  }
  TXMPMeta native;
  EXPECT_TRUE(ReadCanonXFClipXml(
      "<x><Latitude>+0.5</Latitude><Longitude>-180</Longitude><Altitude>-3</Altitude></x>",
      native));
  std::string value;
  EXPECT_TRUE(native.GetProperty(kNsEXIF, "GPSLatitude", &value));
  EXPECT_EQ(value, "0,30.00000N");
  EXPECT_TRUE(native.GetProperty(kNsEXIF, "GPSLongitude", &value));
  EXPECT_EQ(value, "180,0.00000W");
  EXPECT_TRUE(native.GetProperty(kNsEXIF, "GPSAltitudeRef", &value));
  EXPECT_EQ(value, "1");
}

}  // namespace
