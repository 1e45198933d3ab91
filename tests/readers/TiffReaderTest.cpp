// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "support/TiffBytes.h"
#include "xmp/readers/TiffReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::Facts;
using sorvik_test::ReadSample;
using sorvik_test::ReadWith;
using sorvik_test::TextFacts;
using sorvik_test::TiffBytes;
using sorvik_test::TiffEntry;

std::string ExifFile(bool bigEndian) {
  TiffBytes t(bigEndian);
  return t.File(
      {
          t.Ascii(270, "Two dogs "),              // ImageDescription
          t.Ascii(271, "Maker"),                  // Make
          t.Ascii(272, "M1"),                     // Model
          t.Ascii(305, "Tool 1"),                 // Software
          t.Ascii(306, "2021:03:04 05:06:07"),    // DateTime
          t.Ascii(315, "A. One; B. Two;"),        // Artist
          t.Ascii(33432, std::string("P\0E", 3))  // Copyright: photographer, editor
      },
      {{34665,
        {
            t.Ascii(36867, "2021:01:02 03:04:05"),  // DateTimeOriginal
            t.Ascii(36868, "2021:01:02 03:04:06"),  // DateTimeDigitized
            t.Ascii(36882, "+01:00"),               // OffsetTimeDigitized
            t.Ascii(37520, "120"),                  // SubSecTime
            t.Ascii(42033, "S-77"),                 // BodySerialNumber
        }},
       {34853,
        {
            t.Ascii(1, "S"),                                   // LatitudeRef
            t.Ratios(2, {{48, 1}, {12, 1}, {29520, 1000}}),    // Latitude
            t.Ascii(3, "E"),                                   // LongitudeRef
            t.Ratios(4, {{16, 1}, {223800, 10000}, {0, 0}}),   // Longitude
            t.Raw(5, 1, std::string(1, '\1')),                 // AltitudeRef: below the sea
            t.Ratios(6, {{300, 2}}),                           // Altitude
            t.Raw(27, 7, std::string("ASCII\0\0\0GPS ", 12)),  // ProcessingMethod
        }}});
}

TEST(TiffReader, ReadsTagsInBothByteOrders) {
  for (const bool bigEndian : {true, false}) {
    const auto result = ReadWith(kTiffReader, ExifFile(bigEndian));
    EXPECT_TRUE(result.recognised);
    EXPECT_TRUE(result.output.hasNative);
    EXPECT_EQ(result.reads, 0);
    EXPECT_EQ(Facts(result),
              "CreateDate=2021-01-02T03:04:06+01:00\n"
              "ModifyDate=2021-03-04T05:06:07.12\n"
              "CreatorTool=Tool 1\n"
              "Make=Maker\n"
              "Model=M1\n"
              "software=Tool 1\n"
              "SerialNumber=S-77\n"
              "GPSAltitude=300/2\n"
              "GPSAltitudeRef=1\n"
              "GPSLatitude=48,12.49200S\n"
              "GPSLongitude=16,22.38000E\n");
    EXPECT_EQ(TextFacts(result),
              "description=Two dogs\n"
              "rights=P\nE\n"
              "creator=A. One\n"
              "creator=B. Two\n"
              "DateTimeOriginal=2021-01-02T03:04:05\n"
              "GPSProcessingMethod=GPS\n"
              "copyright=P\nE\n");
  }
}

TEST(TiffReader, ReadsThePacketOfTag700) {
  TiffBytes t;
  for (const std::uint16_t type : {std::uint16_t{1}, std::uint16_t{7}}) {
    const auto result = ReadWith(kTiffReader, t.File({t.Raw(700, type, "<x:xmpmeta/>")}));
    EXPECT_EQ(result.output.packet, "<x:xmpmeta/>");
    EXPECT_FALSE(result.output.hasNative) << "a packet is not native metadata";
  }
}

TEST(TiffReader, ReadsADirectoryAtTheEndOfALargeFileInOneRead) {
  TiffBytes t;
  Bytes file(t.File({t.Ascii(271, "Maker of cameras"), t.Raw(700, 1, std::string(500, 'x'))}));
  constexpr std::uint32_t kFar = 3'000'000;
  // The same directory, moved with its values after the pixels.
  Bytes far;
  far.Text("MM").U16(42).U32(kFar).PadTo(kFar);
  far.U16(2);
  far.U16(271).U16(2).U32(17).U32(kFar + 30);
  far.U16(700).U16(1).U32(500).U32(kFar + 47);
  far.U32(0).Add(Bytes("Maker of cameras")).U8(0).Fill(500, 'x');
  const auto result = ReadWith(kTiffReader, far.str());
  EXPECT_EQ(Facts(result), Facts(ReadWith(kTiffReader, file.str())));
  EXPECT_EQ(result.output.packet, std::string(500, 'x'));
  EXPECT_EQ(result.reads, 1);
  EXPECT_LE(result.longestRead, 64u * 1024);
}

// The size of the main picture, exchanged by the orientation.
TEST(TiffReader, GivesTheSizeAsShown) {
  TiffBytes t;
  const auto size = [](const std::string& file) { return Facts(ReadWith(kTiffReader, file)); };
  const std::vector<TiffEntry> picture = {t.Shorts(256, {300}), t.Shorts(257, {200})};
  EXPECT_EQ(size(t.File(picture)), "videoFrameSize=300x200 pixel\n");
  for (const unsigned orientation : {3u, 6u}) {
    EXPECT_EQ(
        size(t.File({picture[0], picture[1], t.Shorts(274, {orientation})})),
        orientation == 3 ? "videoFrameSize=300x200 pixel\n" : "videoFrameSize=200x300 pixel\n");
  }
  // Raw files with a thumbnail in the first directory; else the size of the Exif directory.
  const std::vector<TiffEntry> thumbnail = {t.Long(254, 1), t.Shorts(256, {16}),
                                            t.Shorts(257, {12})};
  const std::vector<TiffEntry> raw = {t.Long(254, 0), picture[0], picture[1]};
  const std::vector<TiffEntry> dimensions = {t.Shorts(40962, {400}), t.Shorts(40963, {250})};
  EXPECT_EQ(size(t.File(thumbnail, {{330, raw}})), "videoFrameSize=300x200 pixel\n");
  EXPECT_EQ(size(t.File(thumbnail, {{34665, dimensions}})), "videoFrameSize=400x250 pixel\n");
  // CR2: the first directory is that of a preview, without a tag for it.
  TiffBytes little(false);
  std::string cr2 =
      little.File({little.Shorts(256, {16}), little.Shorts(257, {12})},
                  {{34665, {little.Shorts(40962, {400}), little.Shorts(40963, {250})}}});
  EXPECT_EQ(size(cr2), "videoFrameSize=16x12 pixel\n");
  Bytes moved;  // two bytes of signature between the header and the directories
  moved.Text(cr2.substr(0, 4)).U32LE(16).Text("CR").Hex("02 00").Fill(4).Text(cr2.substr(8));
  moved.Set(16 + 2 + 2 * 12 + 8, 16 + 2 + 3 * 12 + 4, 1);  // the Exif directory
  EXPECT_EQ(size(moved.str()), "videoFrameSize=400x250 pixel\n");
}

TEST(TiffReader, ReadsRawFilesOfOtherVersions) {
  TiffBytes t(false);
  for (const char* version : {"RO", "RS"}) {  // Olympus ORF
    std::string orf = t.File({t.Ascii(271, "OLYMPUS"), t.Shorts(256, {300}), t.Shorts(257, {200})});
    orf.replace(2, 2, version);
    EXPECT_EQ(Facts(ReadWith(kTiffReader, orf)), "Make=OLYMPUS\nvideoFrameSize=300x200 pixel\n");
  }
  // Panasonic RW2: borders of the sensor, and a preview with the Exif block.
  const std::string exif = t.File({t.Ascii(306, "2021:03:04 05:06:07")});
  Bytes jpeg;
  jpeg.Hex("FFD8 FFE1").U16(exif.size() + 8).Text(std::string("Exif\0\0", 6)).Text(exif);
  jpeg.Hex("FFC0 0008 08 0010 0020 03 FFDA");
  std::string rw2 =
      t.File({t.Shorts(4, {10}), t.Shorts(5, {20}), t.Shorts(6, {210}), t.Shorts(7, {320}),
              t.Raw(0x2E, 7, jpeg.str()), t.Ascii(271, "Panasonic")});
  rw2.replace(2, 2, std::string("U\0", 2));
  const auto result = ReadWith(kTiffReader, rw2);
  EXPECT_EQ(Facts(result),
            "ModifyDate=2021-03-04T05:06:07\nMake=Panasonic\nvideoFrameSize=300x200 pixel\n");
  EXPECT_EQ(result.reads, 1);
}

TEST(TiffReader, ReadsIptcAndImageResources) {
  TiffBytes t;
  const auto dataset = [](const std::string& title) {
    return Bytes().Hex("1C 02 05").U16(title.size()).Text(title).str();
  };
  EXPECT_EQ(TextFacts(ReadWith(kTiffReader, t.File({t.Raw(33723, 7, dataset("Title"))}))),
            "title=Title\n");
  TiffEntry longs = t.Raw(33723, 4, dataset("Title.."));  // of type LONG
  longs.count = static_cast<std::uint32_t>(longs.value.size() / 4);
  EXPECT_EQ(TextFacts(ReadWith(kTiffReader, t.File({longs}))), "title=Title..\n");
  const std::string iptc = dataset("Resource");
  const std::string resources =
      Bytes().Text("8BIM").U16(1028).U16(0).U32(iptc.size()).Text(iptc).str();
  EXPECT_EQ(TextFacts(ReadWith(kTiffReader, t.File({t.Raw(34377, 1, resources)}))),
            "title=Resource\n");
}

TEST(TiffReader, ReadsUserCommentAndExposure) {
  for (const bool bigEndian : {true, false}) {
    TiffBytes t(bigEndian);
    const auto comment = [&](const std::string& bytes) {
      const auto result = ReadWith(
          kTiffReader, t.File({}, {{34665,
                                    {t.Raw(37510, 7, bytes), t.Ratios(33434, {{1, 250}}),
                                     t.Ratios(33437, {{28, 10}}), t.Shorts(34855, {400})}}}));
      EXPECT_EQ(result.Get(kNsEXIF, "ExposureTime"), "1/250");
      EXPECT_EQ(result.Get(kNsEXIF, "FNumber"), "28/10");
      return result.Get(kNsDM, "comment");
    };
    EXPECT_EQ(comment(std::string("ASCII\0\0\0Hello  ", 15)), "Hello");
    EXPECT_EQ(comment(std::string("\0\0\0\0\0\0\0\0Hello", 13)), "Hello");
    const std::string wide(bigEndian ? "UNICODE\0\0H\0i" : "UNICODE\0H\0i\0", 12);
    EXPECT_EQ(comment(wide), "Hi");
    EXPECT_EQ(comment(std::string("JIS\0\0\0\0\0xx", 10)), "");
    EXPECT_EQ(comment(std::string("ASCII\0\0\0   ", 11)), "");
  }
}

TEST(TiffReader, ReadsBigTiff) {
  Bytes b;
  b.Text("MM").U16(43).U16(8).U16(0).U64(16);      // version, size of offsets, first directory
  b.U64(2);                                        // entries
  b.U16(271).U16(2).U64(6).Text("Maker").Fill(3);  // in place
  b.U16(305).U16(2).U64(10).U64(16 + 8 + 40 + 8);  // elsewhere
  b.U64(0).Text("Long Tool").U8(0);
  EXPECT_EQ(Facts(ReadWith(kTiffReader, b.str())),
            "CreatorTool=Long Tool\nMake=Maker\nsoftware=Long Tool\n");
}

// A frame as written by a cinema camera, with the raw image in the first directory.
std::vector<TiffEntry> CinemaTags(const TiffBytes& t) {
  return {
      t.Long(254, 0),                               // NewSubfileType: main picture
      t.Shorts(256, {2000}),                        // ImageWidth
      t.Shorts(257, {1100}),                        // ImageLength
      t.Shorts(258, {12}),                          // BitsPerSample
      t.Shorts(259, {7}),                           // Compression
      t.Ascii(271, "Canon"),                        // Make
      t.Ascii(272, "Canon C9"),                     // Model
      t.Ascii(306, "2021:03:04 05:06:07"),          // DateTime
      t.Raw(50706, 1, std::string("\1\4\0\0", 4)),  // DNGVersion
      t.Ratios(50718, {{4, 1}, {3, 1}}),            // DefaultScale
      t.Ratios(50720, {{1920, 1}, {1080, 1}}),      // DefaultCropSize
      t.Ratios(50728, {{1, 2}, {1, 1}, {1, 2}}),    // AsShotNeutral
      t.Ascii(50735, "SN5"),                        // CameraSerialNumber
      t.Raw(51043, 1, Bytes().Hex("44 03 02 C1 00 00 00 00").str()),  // TimeCodes, drop frame
      t.Ratios(51044, {{30000, 1001}}, 10),                           // FrameRate
      t.Ascii(51081, "A001"),                                         // ReelName
      t.Ascii(51105, "A CAM"),                                        // CameraLabel
  };
}

TEST(TiffReader, ReadsACinemaDNGFrame) {
  TiffBytes t;
  const auto result = ReadWith(kTiffReader, t.File(CinemaTags(t)));
  EXPECT_EQ(Facts(result),
            "CreateDate=2021-03-04T05:06:07\n"
            "ModifyDate=2021-03-04T05:06:07\n"
            "videoFrameRate=29.97\n"
            "videoPixelDepth=Other\n"
            "videoPixelAspectRatio=4/3\n"
            "videoCompressor=Lossless JPEG\n"
            "cameraModel=Canon C9\n"
            "Make=Canon\n"
            "Model=Canon C9\n"
            "SerialNumber=SN5\n"
            "WhiteBalance=As Shot\n"
            "videoFrameSize=1920x1080 pixel\n"
            "startTimecode=01;02;03;04 2997DropTimecode\n")
      << "no duration for a single frame";
  EXPECT_EQ(TextFacts(result), "camera=A CAM\ntapeName=A001\n");
}

TEST(TiffReader, FindsTheRawImageAfterAThumbnail) {
  TiffBytes t;
  const auto result = ReadWith(
      kTiffReader,
      t.File({t.Long(254, 1), t.Shorts(256, {8}), t.Shorts(257, {8}),
              t.Raw(50706, 1, std::string("\1\1\0\0", 4)), t.Ascii(50708, "Model of body")},
             {{330,
               {t.Long(254, 0), t.Shorts(256, {3516}), t.Shorts(257, {2328}),
                t.Shorts(50829, {10, 20, 2010, 3020})}}}));
  EXPECT_EQ(result.Field("videoFrameSize", kNsDimensions, "w"), "3000");
  EXPECT_EQ(result.Field("videoFrameSize", kNsDimensions, "h"), "2000");
  EXPECT_EQ(result.Get(kNsTIFF, "Model"), "Model of body");
}

TEST(TiffReader, DropsInvalidValues) {
  TiffBytes t;
  auto tags = CinemaTags(t);
  const auto with = [&](const TiffEntry& entry) {
    auto changed = tags;
    for (auto& tag : changed) {
      if (tag.tag == entry.tag) tag = entry;
    }
    return ReadWith(kTiffReader, t.File(changed));
  };
  EXPECT_EQ(with(t.Ratios(51044, {{24, 0}}, 10)).Get(kNsDM, "videoFrameRate"), "");
  EXPECT_EQ(with(t.Ratios(51044, {{0xFFFFFFE8, 1}}, 10)).Get(kNsDM, "videoFrameRate"), "");
  EXPECT_EQ(with(t.Raw(51043, 1, Bytes().Hex("0A 03 02 01").str()))
                .Field("startTimecode", kNsDM, "timeValue"),
            "");
  EXPECT_EQ(with(t.Ascii(306, "0000:00:00 00:00:00")).Get(kNsXMP, "ModifyDate"), "");
  EXPECT_EQ(with(t.Ascii(306, "2021:03")).Get(kNsXMP, "ModifyDate"), "");
  EXPECT_EQ(with(t.Ratios(50718, {{1, 1}, {0, 0}})).Get(kNsDM, "videoPixelAspectRatio"), "");
}

TEST(TiffReader, SurvivesInvalidDirectories) {
  const std::string good = ExifFile(true);
  for (std::size_t size = 0; size < good.size(); ++size) {
    ReadWith(kTiffReader, good.substr(0, size));
  }
  // Invalid entries: type 0, count 0, a count whose size wraps, a value past the end; then a valid
  // one.
  Bytes b;
  b.Text("MM").U16(42).U32(8).U16(6);
  b.U16(270).U16(0).U32(1).U32(0);
  b.U16(272).U16(2).U32(0).U32(0);
  b.U16(305).U16(5).U32(0x20000001).U32(8);
  b.U16(315).U16(2).U32(20).U32(0xFFFFFFF0);
  b.U16(34665).U16(4).U32(1).U32(8);  // Exif directory: the first one again
  b.U16(271).U16(2).U32(4).Text("Mak");
  EXPECT_EQ(Facts(ReadWith(kTiffReader, Bytes(b).U8(0).U32(0).str())), "Make=Mak\n");
  EXPECT_EQ(Facts(ReadWith(kTiffReader, b.str())), "") << "the last entry is one byte short";

  // Sixteen sub-directories that point at themselves, and 65,535 entries.
  TiffBytes t;
  std::string offsets;
  for (int i = 0; i < 100; ++i) offsets += Bytes().U32(8).str();
  auto loops = t.File({t.Long(254, 1), {330, 4, 100, offsets}, t.Raw(50706, 1, "1400")});
  EXPECT_TRUE(ReadWith(kTiffReader, loops).output.hasNative);
  loops.replace(8, 2, "\xFF\xFF");
  EXPECT_FALSE(ReadWith(kTiffReader, loops).output.hasNative);
}

struct SampleFrame {
  const char* name;
  const char* facts;
};

TEST(TiffReader, MatchesExiftoolOnSamples) {
  // Compared with the output of exiftool 12.57. Known differences: the size is the crop to be
  // shown, and a rate is rounded to 3 decimals.
  const SampleFrame kFrames[] = {
      {"dng/gen-mlvfs-header-23976.dng",
       "CreateDate=2021-03-04T05:06:07\n"
       "ModifyDate=2021-03-04T05:06:07\n"
       "CreatorTool=MLVFS\n"
       "videoFrameRate=23.976\n"
       "videoPixelDepth=16Int\n"
       "videoPixelAspectRatio=1/1\n"
       "videoCompressor=Uncompressed\n"
       "cameraModel=Canon EOS 5D Mark III\n"
       "Make=Canon\n"
       "Model=Canon EOS 5D Mark III\n"
       "software=MLVFS\n"
       "SerialNumber=1A2B3C4D\n"
       "WhiteBalance=As Shot\n"
       "videoFrameSize=1920x1080 pixel\n"
       "startTimecode=00:59:59:23 23976Timecode\n"},
      {"dng/derived-exiftool-cinemadng-25-noxmp.dng",
       "CreateDate=2005-08-03T18:59:18\n"
       "ModifyDate=2005-08-03T18:59:18\n"
       "videoFrameRate=25\n"
       "videoPixelDepth=16Int\n"
       "videoPixelAspectRatio=1/1\n"
       "videoCompressor=Lossless JPEG\n"
       "cameraModel=Canon EOS 350D DIGITAL\n"
       "Make=Canon\n"
       "Model=Canon EOS 350D DIGITAL\n"
       "SerialNumber=012345678\n"
       "WhiteBalance=As Shot\n"
       "videoFrameSize=3456x2304 pixel\n"
       "startTimecode=23:59:59:24 25Timecode\n"},
      {"dng/derived-exiftool-cinemadng-2398.dng",
       "CreateDate=2005-08-03T18:59:18\n"
       "ModifyDate=2021-03-04T05:06:07\n"
       "CreatorTool=Example Firmware 1.0\n"
       "videoFrameRate=23.976\n"
       "videoPixelDepth=16Int\n"
       "videoPixelAspectRatio=1/1\n"
       "videoCompressor=Lossless JPEG\n"
       "cameraModel=Canon EOS 350D DIGITAL\n"
       "Make=Canon\n"
       "Model=Canon EOS 350D DIGITAL\n"
       "software=Example Firmware 1.0\n"
       "SerialNumber=012345678\n"
       "GPSAltitude=343/2\n"
       "GPSAltitudeRef=0\n"
       "GPSLatitude=48,12.49200N\n"
       "GPSLongitude=16,22.42800E\n"
       "WhiteBalance=As Shot\n"
       "videoFrameSize=3456x2304 pixel\n"
       "startTimecode=01:02:03:04 23976Timecode\n"},
  };
  for (const SampleFrame& frame : kFrames) {
    const auto bytes = ReadSample(frame.name);
    if (!bytes) GTEST_SKIP() << "samples not found";
    EXPECT_EQ(Facts(ReadWith(kTiffReader, *bytes)), frame.facts) << frame.name;
  }
}

}  // namespace
