// SPDX-License-Identifier: MIT
// Telemetry of action cameras and drones: GPMF, subtitles, trailers.
#include <gtest/gtest.h>

#include "support/IsoBytes.h"
#include "support/ReadWith.h"
#include "xmp/readers/GpmfTelemetry.h"
#include "xmp/readers/IsoMediaReader.h"
#include "xmp/readers/SubtitleTelemetryReader.h"

namespace {

using namespace Sorvik::xmp;
using namespace sorvik_test;

WantedProperties Wants(const char* schema, const char* name) {
  WantedProperties wanted = WantedProperties::None();
  wanted.Add(schema, name);
  return wanted;
}

Bytes Item(const std::string& key, char type, unsigned size, const Bytes& value) {
  Bytes item;
  item.Text(key).Text(std::string(1, type)).U8(size).U16(value.size() / size).Add(value);
  return item.Fill((4 - value.size() % 4) % 4);
}
Bytes Group(const std::string& key, const std::vector<Bytes>& items) {
  Bytes value;
  for (const Bytes& item : items) value.Add(item);
  return Item(key, '\0', 1, value);
}

Bytes Positions5(unsigned fix) {
  Bytes scale, position;
  scale.U32(10'000'000).U32(10'000'000).U32(1000).U32(1000).U32(100);
  position.U32(481'234'567).U32(~std::uint32_t{113'000'000} + 1).U32(~std::uint32_t{1'500} + 1);
  return Group("DEVC", {Item("DVNM", 'c', 1, Bytes().Text("Hero7 Black")),
                        Group("STRM", {Item("GPSF", 'L', 4, Bytes().U32(fix)),
                                       Item("GPSU", 'U', 16, Bytes().Text("170417173103.250")),
                                       Item("SCAL", 'l', 4, scale),
                                       Item("GPS5", 'l', 20, position.U32(0).U32(0))})});
}

Bytes Positions9() {
  Bytes scale, position;
  scale.U32(10'000'000)
      .U32(10'000'000)
      .U32(1000)
      .U32(1000)
      .U32(100)
      .U32(1)
      .U32(1000)
      .U32(100)
      .U32(1);
  position.U32(481'234'567).U32(113'000'000).U32(1500).U32(0).U32(0);
  position.U32(8401).U32(63'063'000).U16(200).U16(3);
  return Group("DEVC",
               {Group("STRM", {Item("SCAL", 'l', 4, scale), Item("GPS9", '?', 32, position)})});
}

// A movie whose telemetry track has one sample.
std::string MovieWith(const Bytes& sample) {
  Bytes file = FileType();
  const std::uint32_t offset = static_cast<std::uint32_t>(file.size()) + 8;
  const Bytes entry = Box("gpmd", Bytes().Fill(6).U16(1).U32(0));
  const Bytes track =
      Track("meta", MediaHeader(1000, 1000),
            {Descriptions(entry), Durations({{1, 1000}}), Sizes(1), Chunks(offset)});
  return file.Add(Box("mdat", sample)).Add(Box("moov", {MovieHeader(1000, 1000), track})).str();
}

TEST(GpmfTelemetry, GivesModelPositionAndTimeOfTheTrack) {
  const ReadResult result = ReadWith(kIsoMediaReader, MovieWith(Positions5(3)));
  EXPECT_EQ(result.Get(kNsTIFF, "Model"), "Hero7 Black");
  EXPECT_EQ(result.Get(kNsEXIF, "GPSLatitude"), "48,7.40740N");
  EXPECT_EQ(result.Get(kNsEXIF, "GPSLongitude"), "11,18.00000W");
  EXPECT_EQ(result.Get(kNsEXIF, "GPSAltitude"), "1500/1000");
  EXPECT_EQ(result.Get(kNsEXIF, "GPSAltitudeRef"), "1");
  EXPECT_EQ(result.Get(kNsEXIF, "GPSTimeStamp"), "2017-04-17T17:31:03.250Z");
  const ReadResult newer = ReadWith(kIsoMediaReader, MovieWith(Positions9()));
  EXPECT_EQ(newer.Get(kNsEXIF, "GPSLongitude"), "11,18.00000E");
  EXPECT_EQ(newer.Get(kNsEXIF, "GPSTimeStamp"), "2023-01-01T17:31:03Z");
}

TEST(GpmfTelemetry, IgnoresPositionsWithoutFix) {
  const ReadResult result = ReadWith(kIsoMediaReader, MovieWith(Positions5(0)));
  EXPECT_EQ(result.Get(kNsEXIF, "GPSLatitude"), "");
  EXPECT_EQ(result.Get(kNsEXIF, "GPSTimeStamp"), "");
  EXPECT_EQ(result.Get(kNsTIFF, "Model"), "Hero7 Black");
}

TEST(GpmfTelemetry, IsReadOnlyIfWanted) {
  Bytes before;
  before.Fill(2 * kHeadSize);  // so that the sample isn't in the head
  const std::string file = MovieWith(before.Add(Positions5(3)));
  const int without = ReadWith(kIsoMediaReader, file, {}, Wants(kNsDM, "duration")).reads;
  EXPECT_EQ(ReadWith(kIsoMediaReader, file, {}, Wants(kNsEXIF, "GPSLatitude")).reads, without + 1);
}

TEST(GpmfTelemetry, ReadsRecordingsOfCameras) {
  struct Sample {
    const char* name;
    const char* model;
    const char* time;
  };
  for (const Sample& sample : {Sample{"consecutive1.raw", "Hero7 Black", ""},
                               Sample{"consecutive2.raw", "Hero7 Black", ""},
                               Sample{"hero5.raw", "", "2017-04-17T17:31:03Z"}}) {
    const auto bytes = ReadSample(std::string("new/gopro/") + sample.name);
    if (!bytes) GTEST_SKIP() << "no samples";
    TXMPMeta meta;
    SetGpmfFacts(Sorvik::foundation::ReaderOf(*bytes), meta);
    std::string model, time;
    meta.GetProperty(kNsTIFF, "Model", &model);
    meta.GetProperty(kNsEXIF, "GPSTimeStamp", &time);
    EXPECT_EQ(model, sample.model) << sample.name;
    EXPECT_EQ(time, sample.time) << sample.name;
  }
}

TEST(GpmfTelemetry, SurvivesDamage) {
  const std::string bytes = MovieWith(Positions5(3).Add(Positions9()));
  ReadDamaged(kIsoMediaReader, bytes);
}

constexpr char kSubtitles[] =
    "1\r\n00:00:00,000 --> 00:00:00,033\r\n<font size=\"28\">FrameCnt: 1, DiffTime: 33ms\r\n"
    "2023-08-10 13:21:22.123\r\n[iso: 100] [shutter: 1/1000.0] [latitude: 0.000000] "
    "[longitude: 0.000000] [rel_alt: 0.000 abs_alt: 0.000] </font>\r\n\r\n"
    "2\r\n00:00:00,033 --> 00:00:00,066\r\n2023-08-10 13:21:22.156\r\n[iso: 100] "
    "[latitude: -48.123457] [longtitude : 11.300000] [rel_alt: 1.500 abs_alt: 520.400]\r\n";

TEST(SubtitleTelemetry, GivesDateAndFirstPosition) {
  const ReadResult result = ReadWith(kSubtitleTelemetryReader, kSubtitles, "/a/DJI_0001.SRT");
  EXPECT_TRUE(result.recognised);
  EXPECT_TRUE(result.output.hasNative);
  EXPECT_EQ(result.Get(kNsXMP, "CreateDate"), "2023-08-10T13:21:22");
  EXPECT_EQ(result.Get(kNsEXIF, "GPSLatitude"), "48,7.40742S");
  EXPECT_EQ(result.Get(kNsEXIF, "GPSLongitude"), "11,18.00000E");
  EXPECT_EQ(result.Get(kNsEXIF, "GPSAltitude"), "520400/1000");
  EXPECT_EQ(result.reads, 0);
  ReadDamaged(kSubtitleTelemetryReader, kSubtitles);
}

TEST(SubtitleTelemetry, LeavesOtherSubtitlesToOtherReaders) {
  const char* subtitles = "1\n00:00:00,000 --> 00:00:02,000\nHello [latitude\n";
  EXPECT_FALSE(ReadWith(kSubtitleTelemetryReader, kSubtitles, "/a/DJI_0001.txt").recognised);
  EXPECT_FALSE(
      ReadWith(kSubtitleTelemetryReader, "1\n00:00:00,000 --> 00:00:02,000\nHello\n", "a.srt")
          .recognised);
  EXPECT_EQ(ReadWith(kSubtitleTelemetryReader, subtitles, "a.srt").Get(kNsEXIF, "GPSLatitude"), "");
}

// The trailer of an Insta360 file with these records, first to last.
Bytes Trailer(const std::vector<std::pair<unsigned, Bytes>>& records) {
  Bytes trailer;
  for (const auto& [id, record] : records) trailer.Add(record).U16LE(id).U32LE(record.size());
  trailer.Fill(32);
  const std::size_t total = trailer.size() + 40;
  return trailer.U32LE(total).Fill(4).Text("8db42d694ccc418790edff439fe026bf");
}

Bytes MakerNotes() {
  Bytes notes;
  notes.U8(0x0A).U8(14).Text("IXSE42GABCDEFG").U8(0x12).U8(11).Text("Insta360 X3");
  return notes.U8(0x20).U8(5).U8(0x1A).U8(6).Text("v1.0.0");
}

TEST(Insta360Trailer, GivesSerialNumberModelAndFirmware) {
  Bytes file(MovieWith(Bytes().Text("x")));
  file.Add(Trailer({{0x0101, MakerNotes()}, {0x0300, Bytes().Fill(200)}, {0x0600, Bytes()}}));
  const ReadResult result =
      ReadWith(kIsoMediaReader, file.str(), "VID_20240101_120000_00_001.insv");
  EXPECT_EQ(result.Get(kNsAux, "SerialNumber"), "IXSE42GABCDEFG");
  EXPECT_EQ(result.Get(kNsTIFF, "Make"), "Insta360");
  EXPECT_EQ(result.Get(kNsTIFF, "Model"), "Insta360 X3");
  EXPECT_EQ(result.Get(kNsXMP, "CreatorTool"), "v1.0.0");
  EXPECT_EQ(ReadWith(kIsoMediaReader, file.str(), "a.mp4").Get(kNsAux, "SerialNumber"), "");
}

TEST(Insta360Trailer, SurvivesDamage) {
  const std::string movie = MovieWith(Bytes().Text("x"));
  const std::string trailer = Trailer({{0x0101, MakerNotes()}, {0x0300, Bytes().Fill(8)}}).str();
  for (std::size_t at = 0; at < trailer.size(); ++at) {
    for (const char value : {'\0', '\1', '\x7F', '\xFF'}) {
      std::string changed = trailer;
      changed[at] = value;
      ReadWith(kIsoMediaReader, movie + changed, "a.insv");
    }
    ReadWith(kIsoMediaReader, movie + trailer.substr(at), "a.insv");
  }
}

}  // namespace
