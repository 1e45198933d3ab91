// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/Cards.h"
#include "support/ReadWith.h"
#include "support/TempTree.h"
#include "xmp/readers/NonRealTimeMetaReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Facts;
using sorvik_test::ReadResult;
using sorvik_test::ReadSample;
using sorvik_test::ReadWith;
using sorvik_test::TempTree;

ReadResult Read(std::string_view xml, const std::string& path = {}) {
  return ReadWith(kNonRealTimeMetaReader, xml, path);
}

std::string Document(std::string_view content) {
  return "<n:NonRealTimeMeta xmlns:n=\"urn:schemas-professionalDisc:nonRealTimeMeta\">" +
         std::string(content) + "</n:NonRealTimeMeta>";
}

std::string Time(const ReadResult& result) {
  return result.Field("startTimecode", kNsDM, "timeValue") + " " +
         result.Field("startTimecode", kNsDM, "timeFormat");
}

std::string Length(const ReadResult& result) {
  return result.Field("duration", kNsDM, "value") + " " + result.Field("duration", kNsDM, "scale");
}

TEST(NonRealTimeMetaReader, ReadsACameraWithASeparateRecorder) {
  const auto xml = ReadSample("xdcam/venice-axs/D001C005_210716AGM01.xml");
  if (!xml) GTEST_SKIP() << "samples not found";
  const ReadResult result = Read(*xml);
  ASSERT_TRUE(result.recognised);
  EXPECT_FALSE(result.output.nativeIdentityWins);
  EXPECT_EQ(Facts(result),
            "identifier=060A2B340101010501010D4313000000373DE9D2119405DB080046021707296C\n"
            "CreateDate=2021-07-16T11:46:22-08:00\n"
            "ModifyDate=2021-07-16T11:46:47-08:00\n"
            "videoFrameRate=24\n"
            "videoPixelAspectRatio=1/1\n"
            "videoCompressor=F55_X-OCN_XT_6K_16:9\n"
            "videoFieldOrder=Progressive\n"
            "audioSampleRate=48000\n"
            "audioSampleType=24Int\n"
            "audioChannelType=Other\n"
            "audioCompressor=LPCM24\n"
            "cameraModel=MPC-3610\n"
            "Make=Sony\n"
            "Model=MPC-3610\n"
            "software=6.10\n"
            "SerialNumber=0010201\n"
            "videoFrameSize=5674x3192 pixel\n"
            "startTimecode=16:47:04:19 24Timecode\n"
            "duration=588 @ 1/24\n");
  EXPECT_EQ(result.Get(kNsDM, "shotNumber"), "005");
  EXPECT_EQ(result.Get(kNsDM, "camera"), "D");
  EXPECT_EQ(result.Get(kNsDM, "good"), "");
}

TEST(NonRealTimeMetaReader, ReadsPositionsAndOmitsUnsetFacts) {
  const auto a7m4 = ReadSample("xdcam/a7m4/Sony-A7M4-video.XML");
  const auto fx3 = ReadSample("xdcam/fx3-2022-25p/FX3-25p-M01.XML");
  if (!a7m4 || !fx3) GTEST_SKIP() << "samples not found";
  const ReadResult first = Read(*a7m4);
  EXPECT_EQ(first.Get(kNsEXIF, "GPSLatitude"), "34,42.33052N");
  EXPECT_EQ(first.Get(kNsEXIF, "GPSLongitude"), "135,29.61012E");
  EXPECT_EQ(first.Get(kNsEXIF, "GPSAltitude"), "");
  EXPECT_EQ(Time(first), "10:10:26:16 23976Timecode");
  EXPECT_EQ(Length(first), "420 1001/24000");
  EXPECT_EQ(first.Get(kNsDM, "videoFrameRate"), "23.976");

  std::string noFix = *a7m4;
  noFix.replace(noFix.find("\"A\""), 3, "\"V\"");
  EXPECT_EQ(Read(noFix).Get(kNsEXIF, "GPSLatitude"), "");

  const ReadResult second = Read(*fx3);
  EXPECT_EQ(second.Get(kNsAux, "SerialNumber"), "");
  EXPECT_EQ(Time(second), "19:57:30:17 25Timecode");
  EXPECT_EQ(Length(second), "4380 1/25");
}

struct CardClip {
  const char* name;
  const char* time;
  const char* length;
  const char* rate;
  const char* size;
};

class AX100Clip : public testing::TestWithParam<CardClip> {};

// Clip XML without a format: the card's material list contains it.
TEST_P(AX100Clip, IsCompletedFromTheListOfItsCard) {
  const std::string place = "xdcam/ax100-blog/M4ROOT/";
  const std::string file = "CLIP/" + std::string(GetParam().name) + "M01.XML";
  const auto xml = ReadSample(place + file);
  const auto list = ReadSample(place + "MEDIAPRO.XML");
  if (!xml || !list) GTEST_SKIP() << "samples not found";
  const TempTree tree;
  const std::string path = tree.File(file, *xml);
  const ReadResult alone = Read(*xml, path);
  EXPECT_EQ(Time(alone), GetParam().time);
  EXPECT_EQ(Length(alone), GetParam().length);
  EXPECT_EQ(alone.Get(kNsDM, "videoCompressor"), "");

  tree.File("MEDIAPRO.XML", *list);
  const ReadResult onCard = Read(*xml, path);
  EXPECT_EQ(Time(onCard), GetParam().time);
  EXPECT_EQ(Length(onCard), GetParam().length);
  EXPECT_EQ(onCard.Get(kNsDM, "videoFrameRate"), GetParam().rate);
  EXPECT_EQ(onCard.Field("videoFrameSize", kNsDimensions, "w"), GetParam().size);
  EXPECT_EQ(onCard.Get(kNsDM, "audioSampleType"), "16Int");
  EXPECT_EQ(onCard.Get(kNsDM, "audioChannelType"), "Stereo");
  EXPECT_EQ(onCard.Get(kNsDM, "good"), "");  // marked OK, which this camera does for every clip
}

INSTANTIATE_TEST_SUITE_P(
    Samples, AX100Clip,
    testing::Values(
        CardClip{"C0001", "00;00;00;00 5994DropTimecode", "210 1001/60000", "59.94", "1920"},
        CardClip{"C0002", "00;00;00;00 2997DropTimecode", "165 1001/30000", "29.97", "1920"},
        CardClip{"C0003", "00:00:00:00 23976Timecode", "120 1001/24000", "23.976", "1920"},
        CardClip{"C0004", "00;00;00;00 2997DropTimecode", "105 1001/30000", "29.97", "3840"},
        CardClip{"C0005", "00:00:00:00 23976Timecode", "84 1001/24000", "23.976", "3840"}));

struct WordCase {
  const char* why;
  const char* table;  // attributes of the timecode table
  const char* value;
  const char* rate;
  const char* expected;
};

class TimecodeWord : public testing::TestWithParam<WordCase> {};

TEST_P(TimecodeWord, IsDecoded) {
  const WordCase& test = GetParam();
  const ReadResult result = Read(Document(
      "<VideoFormat><VideoFrame formatFps=\"" + std::string(test.rate) +
      "\"/></VideoFormat><LtcChangeTable " + test.table +
      "><LtcChange frameCount=\"9\" value=\"01010101\"/><LtcChange frameCount=\"0\" value=\"" +
      test.value + "\"/></LtcChangeTable>"));
  EXPECT_EQ(Time(result), test.expected) << test.why;
}

INSTANTIATE_TEST_SUITE_P(
    Words, TimecodeWord,
    testing::Values(WordCase{"second of a pair", "tcFps=\"30\" halfStep=\"true\"", "54830000",
                             "59.94p", "00;00;03;29 5994DropTimecode"},
                    WordCase{"second of a pair at 50", "tcFps=\"25\" halfStep=\"true\"", "12030281",
                             "50p", "01:02:03:25 50Timecode"},
                    WordCase{"no half steps at 50", "tcFps=\"25\" halfStep=\"false\"", "12030201",
                             "50p", "01:02:03:12 25Timecode"},
                    WordCase{"flags of 25 are masked", "tcFps=\"25\" halfStep=\"false\"",
                             "D2838241", "25p", "01:02:03:12 25Timecode"},
                    WordCase{"true 30", "tcFps=\"30\" halfStep=\"false\"", "12030201", "30p",
                             "01:02:03:12 30Timecode"},
                    WordCase{"high speed", "tcFps=\"30\" halfStep=\"false\"", "12030201", "119.88p",
                             "01:02:03:12 2997NonDropTimecode"},
                    WordCase{"no form for pairs of 24", "tcFps=\"24\" halfStep=\"true\"",
                             "12030201", "47.95p", " "},
                    WordCase{"no digit", "tcFps=\"25\" halfStep=\"false\"", "1A030201", "25p", " "},
                    WordCase{"frame beyond the base", "tcFps=\"24\" halfStep=\"false\"", "24030201",
                             "24p", " "},
                    WordCase{"no hour", "tcFps=\"25\" halfStep=\"false\"", "12030224", "25p", " "},
                    WordCase{"too short", "tcFps=\"25\" halfStep=\"false\"", "120302", "25p", " "},
                    WordCase{"unknown base", "tcFps=\"120\" halfStep=\"false\"", "12030201", "25p",
                             " "}));

TEST(NonRealTimeMetaReader, ReadsLensAndCaptureSettings) {
  const ReadResult result = Read(Document(
      "<VideoFormat><VideoFrame captureFps='100p' formatFps='25p'/></VideoFormat>"
      "<Lens modelName='S7i-32                '/><AcquisitionRecord>"
      "<Group name='LensUnitMetadataSet'><Item name='CaptureGammaEquation' value='other'/></Group>"
      "<Group name='CameraUnitMetadataSet'><Item name='CaptureGammaEquation' value='s-log3-cine'/>"
      "<Item name='CaptureColorPrimaries' value='s-gamut3-cine'/></Group></AcquisitionRecord>"));
  EXPECT_EQ(result.Get(kNsAux, "Lens"), "S7i-32");
  EXPECT_EQ(result.Get(kNsNonRealTimeMeta, "captureFps"), "100p");
  EXPECT_EQ(result.Get(kNsDM, "videoFrameRate"), "25");
  EXPECT_EQ(result.Get(kNsNonRealTimeMeta, "CaptureGammaEquation"), "s-log3-cine");
  EXPECT_EQ(result.Get(kNsNonRealTimeMeta, "CaptureColorPrimaries"), "s-gamut3-cine");
}

TEST(NonRealTimeMetaReader, ReadsAspectAndRateFromTexts) {
  const auto shape = [](std::string_view video, std::string_view more) {
    const ReadResult result =
        Read(Document("<Duration value=\"5\"/><VideoFormat>" + std::string(video) +
                      "</VideoFormat>" + std::string(more)));
    return result.Field("videoFrameSize", kNsDimensions, "w") + "x" +
           result.Field("videoFrameSize", kNsDimensions, "h") + " " +
           result.Get(kNsDM, "videoPixelAspectRatio") + " " + result.Get(kNsDM, "videoFieldOrder") +
           " " + Length(result);
  };
  EXPECT_EQ(shape("<VideoFrame videoCodec=\"MPEG2HD35_1440_1080_MP@HL\" formatFps=\"59.94i\"/>"
                  "<VideoLayout aspectRatio=\"16:9\"/>",
                  ""),
            "1440x1080 4/3 Upper 5 1001/30000");
  EXPECT_EQ(shape("<VideoFrame videoCodec=\"DV25DATA_420\" formatFps=\"50i\"/>"
                  "<VideoLayout aspectRatio=\"4:3\"/>",
                  ""),
            "720x576 12/11 Lower 5 1/25");
  EXPECT_EQ(shape("<VideoFrame videoCodec=\"IMX50\" formatFps=\"59.94i\"/>"
                  "<VideoLayout aspectRatio=\"16:9\"/>",
                  ""),
            "720x480 40/33  5 1001/30000");
  // Slow motion uses the rate of the format.
  EXPECT_EQ(shape("<VideoFrame captureFps=\"100p\" formatFps=\"25p\"/>", ""),
            "x  Progressive 5 1/25");
  EXPECT_EQ(shape("<VideoFrame formatFps=\"0p\"/>", ""), "x  Progressive  ");
  EXPECT_EQ(shape("", "<LtcChangeTable tcFps=\"25\" halfStep=\"true\"/>"), "x   5 1/50");
}

TEST(NonRealTimeMetaReader, ReadsTitlesAndMarks) {
  const std::string texts =
      "<TargetMaterial status=\"NG\"/><Title usAscii=\"Ascii\"><l:Alias "
      "xmlns:l=\"urn:lib\">\xC3\x9C</l:Alias></Title><Description usAscii=\"About\"/>"
      "<UserDescriptiveMetadata><Meta name=\"Scene\" content=\" 7 \"/><Meta name=\"Take\" "
      "content=\"\"/><Meta name=\"Take\" content=\"2\"/></UserDescriptiveMetadata>";
  const ReadResult disc = Read(Document(texts), "/disc/Clip/C0001M01.XML");
  std::string title;
  EXPECT_TRUE(
      disc.output.native.GetLocalizedText(kNsDC, "title", "", "x-default", nullptr, &title));
  EXPECT_EQ(title, "\xC3\x9C");
  EXPECT_EQ(disc.Get(kNsDM, "shotName"), "");
  EXPECT_EQ(disc.Get(kNsDM, "good"), "False");
  EXPECT_EQ(disc.Get(kNsDM, "scene"), "7");
  EXPECT_EQ(disc.Get(kNsDM, "takeNumber"), "2");

  const TempTree tree;
  const ReadResult card = Read(Document(texts), tree.Path("BPAV/CLPR/a/aM01.XML"));
  EXPECT_EQ(card.Get(kNsDM, "shotName"), "\xC3\x9C");
  EXPECT_TRUE(card.output.nativeIdentityWins);
}

TEST(NonRealTimeMetaReader, ReadsTheListOnlyForWantedProperties) {
  const TempTree tree;
  sorvik_test::MakeXDCAMEXCard(tree, "card", {{.name = "T_01"}, {.name = "T_02"}},
                               {{.name = "T", .clips = {"T_01", "T_02"}}});
  const std::string path = tree.Path("card/BPAV/CLPR/T_01/T_01M01.XML");
  const std::string xml = sorvik_test::NonRealTimeMetaXml({.name = "T_01"});
  const auto relation = [&](const WantedProperties& wanted) {
    const ReadResult result = ReadWith(kNonRealTimeMetaReader, xml, path, wanted);
    EXPECT_TRUE(result.output.hasNative);
    std::string item;
    result.output.native.GetArrayItem(kNsDC, "relation", 1, &item);
    return item;
  };
  EXPECT_EQ(relation(WantedProperties::All()), sorvik_test::UmidOf("T"));
  EXPECT_EQ(relation(WantedProperties::None()), "");
}

// Facts missing from a clip's XML come from the list, whatever else is wanted.
TEST(NonRealTimeMetaReader, FillsSingleFactsFromTheList) {
  const TempTree tree;
  tree.File("MEDIAPRO.XML",
            "<MediaProfile><Contents><Material uri=\"./Clip/C1.MXF\" dur=\"75\" ch=\"2\" "
            "aspectRatio=\"4:3\"><RelevantInfo uri=\"./Clip/C1M01.XML\" type=\"XML\"/></Material>"
            "</Contents></MediaProfile>");
  const std::string xml = Document(
      "<VideoFormat><VideoFrame videoCodec=\"DV25\" formatFps=\"25p\"/></VideoFormat>"
      "<AudioFormat><AudioRecPort audioCodec=\"LPCM16\"/></AudioFormat>");
  const auto only = [&](const char* name) {
    WantedProperties wanted = WantedProperties::None();
    wanted.Add(kNsDM, name);
    return ReadWith(kNonRealTimeMetaReader, xml, tree.Path("Clip/C1M01.XML"), wanted);
  };
  EXPECT_EQ(Length(only("duration")), "75 1/25");
  EXPECT_EQ(only("audioChannelType").Get(kNsDM, "audioChannelType"), "Stereo");
  EXPECT_EQ(only("videoPixelAspectRatio").Get(kNsDM, "videoPixelAspectRatio"), "12/11");
  EXPECT_EQ(Length(only("good")), " ");
}

TEST(NonRealTimeMetaReader, RejectsOtherFiles) {
  EXPECT_FALSE(Read("").recognised);
  EXPECT_FALSE(Read("<NonRealTimeMetaX/>").recognised);
  EXPECT_FALSE(Read("<!DOCTYPE a><other/>").recognised);
  EXPECT_FALSE(Read("<NonRealTimeMeta><Duration value=\"1\"/>").output.hasNative);
  std::string large = Document(std::string((4 << 20) + 1, ' '));
  EXPECT_FALSE(Read(large).output.hasNative);
}

}  // namespace
