// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "xmp/readers/P2ClipReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Facts;
using sorvik_test::ReadResult;
using sorvik_test::ReadSample;
using sorvik_test::ReadWith;

ReadResult Read(std::string_view xml) {
  return ReadWith(kP2ClipReader, xml, "/card/CONTENTS/CLIP/0001AA.XML");
}

// A clip with these elements in its ClipContent, with a namespace prefix.
std::string Clip(std::string_view content) {
  return "<p:P2Main xmlns:p=\"urn:x\"><ClipContent>" + std::string(content) +
         "</ClipContent></p:P2Main>";
}

std::string Video(std::string_view codec, std::string_view rate, std::string_view more = {}) {
  return "<EssenceList><Video><Codec Class=\"100\">" + std::string(codec) + "</Codec><FrameRate>" +
         std::string(rate) + "</FrameRate>" + std::string(more) + "</Video></EssenceList>";
}

std::string Item(const ReadResult& result, std::string_view array, int index) {
  std::string value;
  result.output.native.GetArrayItem(kNsDC, array, index, &value);
  return value;
}

TEST(P2ClipReader, ReadsAClipOfACamera) {
  const auto xml = ReadSample("p2/template-v3.2/CONTENTS/CLIP/TEMPLATE.XML");
  if (!xml) GTEST_SKIP() << "samples not found";
  std::string filled = *xml;
  for (const auto& [mark, value] : {std::pair("@Duration@", "250"),
                                    {"@StartTimecode@", "10:20:30:24"},
                                    {"@AspectRatio@", "16:9"},
                                    {"@CreationDate@", "2022-03-30T08:57:56+09:00"},
                                    {"@LastUpdateDate@", "2022-03-31T08:57:56"},
                                    {"@StartDate@", "2022-03-30T08:57:00+09:00"},
                                    {"@Manufacturer@", "Panasonic"},
                                    {"@ModelName@", "AG-X"},
                                    {"@Text@", "memo"}}) {
    filled.replace(filled.find(mark), std::string_view(mark).size(), value);
  }
  const ReadResult result = Read(filled);
  ASSERT_TRUE(result.recognised);
  EXPECT_TRUE(result.output.hasNative);
  EXPECT_TRUE(result.output.nativeIdentityWins);
  EXPECT_EQ(Facts(result),
            "identifier=@GlobalClipID@\n"
            "CreateDate=2022-03-30T08:57:56+09:00\n"
            "ModifyDate=2022-03-31T08:57:56\n"
            "videoFrameRate=25\n"
            "videoPixelAspectRatio=1/1\n"
            "videoCompressor=AVC-I_1080/50i\n"
            "videoFieldOrder=Progressive\n"
            "audioSampleRate=48000\n"
            "audioSampleType=16Int\n"
            "audioChannelType=Stereo\n"
            "audioCompressor=PCM\n"
            "shotDate=2022-03-30T08:57:00+09:00\n"
            "shotName=@GlobalClipID@\n"
            "cameraModel=AG-X\n"
            "comment=memo\n"
            "Make=Panasonic\n"
            "Model=AG-X\n"
            "SerialNumber=C4TCA01361\n"
            "videoFrameSize=1920x1080 pixel\n"
            "startTimecode=10:20:30:24 25Timecode\n"
            "duration=250 @ 1/25\n");
}

TEST(P2ClipReader, LinksTheClipsOfAShot) {
  const auto xml = ReadSample("p2/span-from-public-tests/CONTENTS/CLIP/003876.XML");
  if (!xml) GTEST_SKIP() << "samples not found";
  const ReadResult result = Read(*xml);
  // The file has no id of the shot, and none is invented.
  EXPECT_EQ(Item(result, "relation", 1), "topGlobalClipID:060A2B340101010501010D4313000000AAAA");
  EXPECT_EQ(Item(result, "relation", 2),
            "previousGlobalClipID:060A2B340101010501010D4313000000AAAA");
  EXPECT_EQ(Item(result, "relation", 3), "nextGlobalClipID:060A2B340101010501010D4313000000CCCC");
  EXPECT_EQ(result.Get(kNsDC, "identifier"), "060A2B340101010501010D4313000000BBBB");
  EXPECT_EQ(result.Field("duration", kNsDM, "value"), "7482");

  const ReadResult shot = Read(Clip(
      "<Relation><GlobalShotID> AB </GlobalShotID><Connection><Top><GlobalClipID>C;D</GlobalClipID>"
      "</Top><Next><GlobalClipID>EF</GlobalClipID></Next></Connection></Relation>"));
  EXPECT_EQ(Item(shot, "relation", 1), "globalShotID:AB");
  EXPECT_EQ(Item(shot, "relation", 2), "nextGlobalClipID:EF");  // the top's id would split
  EXPECT_EQ(Item(shot, "relation", 3), "");
}

TEST(P2ClipReader, ReadsClipMainDocuments) {
  const auto xml = ReadSample("p2/semipro-sibling/GH6-ClipMain.xml");
  if (!xml) GTEST_SKIP() << "samples not found";
  const ReadResult result = Read(*xml);
  EXPECT_FALSE(result.output.nativeIdentityWins);
  EXPECT_EQ(result.Field("videoFrameSize", kNsDimensions, "w"), "3840");
  EXPECT_EQ(result.Field("duration", kNsDM, "scale"), "1001/120000");
  EXPECT_EQ(result.Get(kNsDM, "videoFrameRate"), "119.88");
  EXPECT_EQ(result.Get(kNsDM, "audioChannelType"), "Other");
  EXPECT_EQ(result.Get(kNsDM, "cameraModel"), "DC-GH6");
  EXPECT_EQ(result.Field("startTimecode", kNsDM, "timeValue"), "00;02;39;03");
}

struct PictureCase {
  const char* codec;
  const char* rate;
  const char* aspect;
  const char* expected;  // width x height, pixel aspect ratio, order of fields
};

class P2Picture : public testing::TestWithParam<PictureCase> {};

TEST_P(P2Picture, FollowsFromTheCodec) {
  const PictureCase& test = GetParam();
  const ReadResult result = Read(Clip(
      Video(test.codec, test.rate, "<AspectRatio>" + std::string(test.aspect) + "</AspectRatio>")));
  EXPECT_EQ(result.Field("videoFrameSize", kNsDimensions, "w") + "x" +
                result.Field("videoFrameSize", kNsDimensions, "h") + " " +
                result.Get(kNsDM, "videoPixelAspectRatio") + " " +
                result.Get(kNsDM, "videoFieldOrder"),
            test.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Codecs, P2Picture,
    testing::Values(PictureCase{"AVC-I_1080/50i", "50i", "16:9", "1920x1080 1/1 Upper"},
                    PictureCase{"AVC-I_720/59.94p", "59.94p", "16:9", "1280x720 1/1 Progressive"},
                    PictureCase{"AVC-G_1080/50i", "25p", "", "1920x1080 1/1 Progressive"},
                    PictureCase{"DV100_1080/59.94i", "23.98p", "16:9", "1280x1080 3/2 Progressive"},
                    PictureCase{"DV100_1080/50i", "50i", "16:9", "1440x1080 4/3 Upper"},
                    PictureCase{"DV100_720/50p", "50p", "16:9", "960x720 4/3 Progressive"},
                    PictureCase{"DV25_420", "50i", "4:3", "720x576 12/11 Lower"},
                    PictureCase{"DV50_422", "59.94i", "16:9", "720x480 40/33 Lower"},
                    PictureCase{"DV25_411", "", "4:3", "x  "},
                    PictureCase{"NEW_4320/50i", "50i", "16:9", "x  "}));

TEST(P2ClipReader, HalfClassStoresFewerColumns) {
  std::string xml = Clip(Video("AVC-I_1080/50i", "50i"));
  xml.replace(xml.find("\"100\""), 5, "\"50\"");
  EXPECT_EQ(Read(xml).Field("videoFrameSize", kNsDimensions, "w"), "1440");
  EXPECT_EQ(Read(xml).Get(kNsDM, "videoPixelAspectRatio"), "4/3");
}

std::string Timecode(std::string_view unit, std::string_view rateElement, std::string_view start) {
  const ReadResult result =
      Read(Clip("<EditUnit>" + std::string(unit) + "</EditUnit><EssenceList><Video>" +
                std::string(rateElement) + "<StartTimecode>" + std::string(start) +
                "</StartTimecode></Video></EssenceList>"));
  return result.Field("startTimecode", kNsDM, "timeValue") + " " +
         result.Field("startTimecode", kNsDM, "timeFormat");
}

TEST(P2ClipReader, CountsTimecodeOnItsBase) {
  const std::string drop = "<FrameRate DropFrameFlag=\"true\">x</FrameRate>";
  EXPECT_EQ(Timecode("1001/30000", drop, "01:02:03:04"), "01;02;03;04 2997DropTimecode");
  EXPECT_EQ(Timecode("1001/30000", "", "01:02:03:04"), "01:02:03:04 2997NonDropTimecode");
  EXPECT_EQ(Timecode("1001/24000", drop, "01:02:03:23"), "01:02:03:23 23976Timecode");
  EXPECT_EQ(Timecode("1/25", drop, "01:02:03:24"), "01:02:03:24 25Timecode");
  EXPECT_EQ(Timecode("1001/60000", drop, "01:02:03:29"), "01;02;03;29 2997DropTimecode");
  EXPECT_EQ(Timecode("1001/60000", "", "01:02:03:30"), "01:02:03:30 5994NonDropTimecode");
  EXPECT_EQ(Timecode("1/50", "", "01:02:03:24"), "01:02:03:24 25Timecode");
  for (const char* wrong :
       {"01:02:03:25", "24:00:00:00", "00:60:00:00", "1:2:3:4", "aa:bb:cc:dd", "00:00:00.00", ""}) {
    EXPECT_EQ(Timecode("1/25", "", wrong), " ") << wrong;
  }
}

TEST(P2ClipReader, ParsesPositionsLeniently) {
  const auto place = [](std::string_view latitude, std::string_view longitude) {
    const ReadResult result =
        Read(Clip("<ClipMetadata><Shoot><Location><Altitude>-12.5</Altitude><Latitude>" +
                  std::string(latitude) + "</Latitude><Longitude>" + std::string(longitude) +
                  "</Longitude><PlaceName>Ulm</PlaceName></Location></Shoot></ClipMetadata>"));
    EXPECT_EQ(result.Get(kNsDM, "shotLocation"), "Ulm");
    EXPECT_EQ(result.Get(kNsEXIF, "GPSAltitude") + result.Get(kNsEXIF, "GPSAltitudeRef"),
              "125/101");
    return result.Get(kNsEXIF, "GPSLatitude") + " " + result.Get(kNsEXIF, "GPSLongitude");
  };
  EXPECT_EQ(place("N34.42.19", "135:29:36.607E"), " 135,29.61012E");
  EXPECT_EQ(place("34 42 19.831 N", "W 0 30"), "34,42.33052N 0,30.00000W");
  EXPECT_EQ(place("-48.5", "+10.25"), "48,30.00000S 10,15.00000E");
  EXPECT_EQ(place("91N", "181E"), " ");
  EXPECT_EQ(place("34", "1 2 3 4E"), " ");
}

TEST(P2ClipReader, RejectsOtherFiles) {
  for (const std::string& other :
       {std::string(), std::string("P2Main"), std::string("<x/>"), std::string(64, '\xFF'),
        std::string("<?xml version=\"1.0\"?><!-- <P2Main/> --><other/>")}) {
    EXPECT_FALSE(Read(other).recognised) << other;
  }
  const std::string full = Clip("<ClipName>x</ClipName>");
  EXPECT_FALSE(Read(std::string_view(full).substr(0, full.size() - 3)).output.hasNative);
  EXPECT_TRUE(Read("\xEF\xBB\xBF<?xml version=\"1.0\"?>\r\n<!-- a --><P2Main/>").output.hasNative);
  std::string utf16("\xFF\xFE", 2);
  for (const char c : full) utf16 += {c, '\0'};
  EXPECT_TRUE(Read(utf16).output.hasNative);
}

}  // namespace
