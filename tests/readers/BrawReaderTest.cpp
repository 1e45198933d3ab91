// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>

#include "support/BrawFile.h"
#include "support/ReadWith.h"
#include "support/TempTree.h"
#include "xmp/readers/BrawSidecarReader.h"
#include "xmp/readers/BrawValues.h"
#include "xmp/readers/IsoMediaReader.h"

namespace {

using namespace Sorvik::xmp;
using namespace sorvik_test;

std::string RecordedMovie() {
  return MadeBraw({TextKey("manufacturer", "Blackmagic Design"),
                   TextKey("camera_type", "Blackmagic URSA Mini Pro 12K"),
                   TextKey("camera_id", "7ef33b36-a5ba-4a04-b218-0afc7eb1f8b6"),
                   TextKey("firmware_version", "7.2.1"),
                   TextKey("clip_number", "A001_04190112_C102"),
                   TextKey("camera_number", "A"),
                   TextKey("reel_name", "1"),
                   TextKey("scene", "1"),
                   {"take", 66, Bytes().U16(99)},
                   TextKey("good_take", "true"),
                   TextKey("lens_type", "Cooke Anamorphic /i Prime Lens 50mm"),
                   TextKey("date_recorded", "2021:04:19"),
                   NumberKey("multicard_volume_number", 1),
                   NumberKey("multicard_volume_count", 2),
                   {"tone_curve_midpoint", 23, Bytes().U32(0x3E800000U)},
                   {"sensor_area_captured", 70, Bytes().U32(7680).U32(6408)},
                   TextKey("post_3dlut_embedded_data", std::string(2000, '0')),
                   TextKey("bad name", "text")});
}

std::string Other(const ReadResult& result, const char* name) {
  return result.Get(kNsBlackmagicRAW, name);
}

TEST(BrawReader, ReadsNamedValuesOfTheFile) {
  const auto result = ReadWith(kIsoMediaReader, RecordedMovie(), "/none/A001.braw");
  EXPECT_EQ(Facts(result),
            "CreateDate=2021-03-04T05:06:07Z\n"  // of the movie header, with its time
            "ModifyDate=2021-03-04T05:06:08Z\n"
            "CreatorTool=7.2.1\n"
            "videoFrameRate=24\n"
            "videoPixelAspectRatio=1/1\n"
            "videoCompressor=Blackmagic RAW\n"
            "fileDataRate=" +
                result.Get(kNsDM, "fileDataRate") +
                "\n"
                "shotDate=2021-04-19\n"
                "shotName=A001_04190112_C102\n"
                "cameraModel=Blackmagic URSA Mini Pro 12K\n"
                "Make=Blackmagic Design\n"
                "Model=Blackmagic URSA Mini Pro 12K\n"
                "software=7.2.1\n"
                "videoFrameSize=5120x4272 pixel\n"
                "duration=24 @ 1/24\n");
  EXPECT_EQ(TextFacts(result),
            "camera=A\n"
            "tapeName=1\n"
            "scene=1\n"
            "takeNumber=99\n"
            "good=True\n");
  EXPECT_EQ(result.Get(kNsAux, "Lens"), "Cooke Anamorphic /i Prime Lens 50mm");
  EXPECT_EQ(Other(result, "camera_id"), "7ef33b36-a5ba-4a04-b218-0afc7eb1f8b6");
  EXPECT_EQ(Other(result, "multicard_volume_count"), "2");
  EXPECT_EQ(Other(result, "tone_curve_midpoint"), "0.25");
  for (const char* name : {"sensor_area_captured", "post_3dlut_embedded_data", "bad name"}) {
    EXPECT_EQ(Other(result, name), "") << name;
  }
  EXPECT_EQ(ReadWith(kIsoMediaReader, RecordedMovie(), "/none/A001.mov").Get(kNsTIFF, "Make"), "")
      << "the names mean nothing in other movies";
}

TEST(BrawReader, ReadsNamedValuesOfUserData) {
  const Bytes user = Box("udta", {BrawMetadata({TextKey("scene", "12A")})});
  const auto result =
      ReadWith(kIsoMediaReader, FileType().Add(Box("moov", {MovieHeader(24, 0), user})).str(),
               "/none/A001.BRAW2");
  EXPECT_EQ(result.Get(kNsDM, "scene"), "12A");
}

TEST(BrawReader, PrefersTheSidecar) {
  const TempTree tree;
  const std::string path = tree.File("A001.braw", RecordedMovie());
  tree.File("A001.sidecar",
            "\xEF\xBB\xBF{\"scene\": \"7\", \"clip\": {\"take\": 3, \"good_take\": false, "
            "\"focal_length\": \"35.5mm\"}, \"iso\": 800, \"list\": [{\"reel_name\": \"no\"}, 5]}");
  const auto result = ReadWith(kIsoMediaReader, RecordedMovie(), path);
  EXPECT_EQ(result.Get(kNsDM, "scene"), "7");
  EXPECT_EQ(result.Get(kNsDM, "takeNumber"), "3");
  EXPECT_EQ(result.Get(kNsDM, "camera"), "A") << "only the file has it";
  EXPECT_EQ(result.Get(kNsEXIF, "FocalLength"), "355/10");
  std::string iso;
  EXPECT_TRUE(result.output.native.GetArrayItem(kNsEXIF, "ISOSpeedRatings", 1, &iso));
  EXPECT_EQ(iso, "800");
}

TEST(BrawReader, ReadsASidecarAlone) {
  const auto read = [](const std::string& json, const char* path = "/card/A001.sidecar") {
    return ReadWith(kBrawSidecarReader, json, path);
  };
  const auto result = read(" {\"scene\": \"7\", \"manufacturer\": \"Blackmagic Design\"}");
  EXPECT_TRUE(result.recognised && result.output.hasNative);
  EXPECT_EQ(result.Get(kNsTIFF, "Make"), "Blackmagic Design");
  EXPECT_FALSE(read("{\"scene\": \"7\"}", "/card/A001.json").recognised);
  EXPECT_FALSE(read("scene = 7").recognised);
  EXPECT_FALSE(read("{}").output.hasNative);
  EXPECT_EQ(read("{\"scene\": \"7\", \"take\": 3, oops").Get(kNsDM, "takeNumber"), "3");
  EXPECT_EQ(read("{\"scene\": \"" + std::string(100'000, 'x') + "\", \"take\": 3}")
                .Get(kNsDM, "takeNumber"),
            "3");
  // Nesting without end costs neither the stack nor what is in front of it.
  std::string deep = "{\"take\": 3, \"a\": ";
  for (int i = 0; i < 100'000; ++i) deep += "[{\"a\":";
  EXPECT_EQ(read(deep).Get(kNsDM, "takeNumber"), "3");
}

TEST(BrawReader, SurvivesTruncationAndCorruption) {
  ReadDamaged(kIsoMediaReader, MadeBraw({TextKey("scene", "1"), NumberKey("take", 2)}));
  ReadDamaged(kBrawSidecarReader, "{\"scene\": \"7\", \"a\": {\"take\": 3.5e1, \"b\": [1, null]}}");
}

}  // namespace
