// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "support/SoundFile.h"
#include "support/TiffBytes.h"
#include "xmp/readers/RiffReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::Facts;
using sorvik_test::ReadDamaged;
using sorvik_test::ReadSample;
using sorvik_test::ReadWith;
using sorvik_test::TextFacts;
using sorvik_test::TiffBytes;

Bytes Chunk(const std::string& id, const Bytes& data) {
  Bytes b;
  b.Text(id).U32LE(data.size()).Add(data);
  return data.size() % 2 == 0 ? b : b.U8(0);
}
Bytes List(const std::string& form, const std::vector<Bytes>& chunks,
           const std::string& id = "LIST") {
  Bytes body(form);
  for (const Bytes& chunk : chunks) body.Add(chunk);
  return Chunk(id, body);
}
std::string Riff(const std::string& form, const std::vector<Bytes>& chunks) {
  return List(form, chunks, "RIFF").str();
}

Bytes MainHeader(std::uint32_t microseconds, std::uint32_t frames) {
  Bytes b;
  b.U32LE(microseconds).Fill(12).U32LE(frames).Fill(12).U32LE(720).U32LE(576).Fill(16);
  return Chunk("avih", b);
}
Bytes Stream(const std::string& kind, const std::string& handler, std::uint32_t scale,
             std::uint32_t rate, std::uint32_t length, const std::vector<Bytes>& more) {
  Bytes b;
  b.Text(kind).Text(handler).Fill(12).U32LE(scale).U32LE(rate).U32LE(0).U32LE(length).Fill(20);
  std::vector<Bytes> chunks = {Chunk("strh", b)};
  chunks.insert(chunks.end(), more.begin(), more.end());
  return List("strl", chunks);
}
Bytes Bitmap(std::uint32_t width, std::uint32_t height, const std::string& codec) {
  Bytes b;
  b.U32LE(40).U32LE(width).U32LE(height).U16LE(1).U16LE(24).Text(codec).Fill(20);
  return Chunk("strf", b);
}
Bytes WaveFormat(unsigned tag, unsigned channels, std::uint32_t rate, unsigned bits) {
  Bytes b;
  b.U16LE(tag).U16LE(channels).U32LE(rate).U32LE(rate * channels * bits / 8);
  return b.U16LE(channels * bits / 8).U16LE(bits);
}

std::string Avi(const std::vector<Bytes>& trailing = {}) {
  // Video properties: the display aspect is 16:9.
  const Bytes properties = Chunk("vprp", Bytes().Fill(20).U32LE(16 << 16 | 9).Fill(12));
  std::vector<Bytes> chunks = {
      List("hdrl", {MainHeader(40000, 100),
                    Stream("vids", "mjpg", 1, 25, 0, {Bitmap(720, ~576u + 1, "MJPG"), properties}),
                    Stream("auds", std::string(4, '\0'), 1, 48000, 0,
                           {Chunk("strf", WaveFormat(1, 2, 48000, 16))}),
                    Chunk("IDIT", Bytes("Wed Mar  3 05:06:07 2021\n")),
                    List("odml", {Chunk("dmlh", Bytes().U32LE(250))})}),
      List("movi", {Chunk("00dc", Bytes().Fill(101))})};
  chunks.insert(chunks.end(), trailing.begin(), trailing.end());
  return Riff("AVI ", chunks);
}

TEST(RiffReader, ReadsAnAviHeader) {
  const auto result = ReadWith(kRiffReader, Avi());
  EXPECT_TRUE(result.recognised);
  EXPECT_TRUE(result.output.hasNative);
  EXPECT_EQ(Facts(result),
            "CreateDate=2021-03-03T05:06:07\n"
            "videoFrameRate=25\n"
            "videoPixelDepth=8Int\n"
            "videoPixelAspectRatio=64/45\n"
            "videoCompressor=Motion JPEG\n"
            "audioSampleRate=48000\n"
            "audioSampleType=16Int\n"
            "audioChannelType=Stereo\n"
            "audioCompressor=PCM\n"
            "videoFrameSize=720x576 pixel\n"
            "duration=250 @ 1/25\n")
      << "the frames of all RIFF chunks; top-down rows have a negative height";
}

TEST(RiffReader, ReadsTextsAndPacketAfterTheMedia) {
  const std::string file =
      Avi({Chunk("idx1", Bytes().Fill(120'000)), Chunk("_PMX", Bytes("<p/>")),
           List("INFO", {Chunk("INAM", Bytes("Title").U8(0)), Chunk("IART", Bytes("Artist")),
                         Chunk("ICMT", Bytes("Caf\xE9")), Chunk("ICOP", Bytes("me")),
                         Chunk("ICRD", Bytes("2020-01-02")), Chunk("ISFT", Bytes("Tool"))}),
           List("Tdat", {Chunk("tc_O", Bytes("01:02:03:04")), Chunk("tc_A", Bytes("05:06:07:08")),
                         Chunk("rn_O", Bytes("R1")), Chunk("rn_A", Bytes("R2"))})});
  const auto result = ReadWith(kRiffReader, file);
  EXPECT_EQ(result.output.packet, "<p/>");
  EXPECT_EQ(TextFacts(result),
            "title=Title\n"
            "rights=me\n"
            "copyright=me\n"
            "tapeName=R1\n"
            "artist=Artist\n"
            "logComment=Caf\xC3\xA9\n"
            "altTapeName=R2\n");
  EXPECT_EQ(result.Get(kNsXMP, "CreateDate"), "2020-01-02");
  EXPECT_EQ(result.Get(kNsXMP, "CreatorTool"), "Tool");
  EXPECT_EQ(result.Field("startTimecode", kNsDM, "timeValue"), "01:02:03:04");
  EXPECT_EQ(result.Field("altTimecode", kNsDM, "timeValue"), "05:06:07:08");
  EXPECT_EQ(result.reads, 1);
}

TEST(RiffReader, ReadsFurtherRiffChunks) {
  const std::string file =
      Avi() + List("AVIX", {List("movi", {}), Chunk("_PMX", Bytes("<p/>"))}, "RIFF").str();
  EXPECT_EQ(ReadWith(kRiffReader, file).output.packet, "<p/>");
}

TEST(RiffReader, ParsesDatesOfCameras) {
  const auto date = [](const std::string& text) {
    return ReadWith(kRiffReader, Riff("AVI ", {List("hdrl", {Chunk("IDIT", Bytes(text))})}))
        .Get(kNsXMP, "CreateDate");
  };
  EXPECT_EQ(date("Mon Mar 10 15:04:43 2003\n"), "2003-03-10T15:04:43");
  EXPECT_EQ(date("WED SEP 10 15:04:43 2003\n"), "2003-09-10T15:04:43");
  EXPECT_EQ(date("2003:03:10 15:04:43"), "2003-03-10T15:04:43");
  EXPECT_EQ(date("2003/03/10/ 15:04"), "2003-03-10T15:04:00");
  EXPECT_EQ(date("2003-03-10"), "2003-03-10");
  EXPECT_EQ(date("Mon Mra 10 15:04:43 2003"), "");
  EXPECT_EQ(date("Mon Mar 32 15:04:43 2003"), "");
  EXPECT_EQ(date("yesterday, some time ago"), "");
}

TEST(RiffReader, RoundsRatesOfIntegerMicroseconds) {
  const auto scaleOf = [](std::uint32_t scale, std::uint32_t rate) {
    return ReadWith(kRiffReader,
                    Riff("AVI ", {List("hdrl", {Stream("vids", "DIB ", scale, rate, 9, {})})}))
        .Field("duration", kNsDM, "scale");
  };
  EXPECT_EQ(scaleOf(66666, 1000000), "1/15");
  EXPECT_EQ(scaleOf(33367, 1000000), "1001/30000");
  EXPECT_EQ(scaleOf(2, 25), "2/25");
  EXPECT_EQ(scaleOf(0, 25), "");
}

// A broadcast recorder's file: 10 seconds at 48 kHz, 24 bits, two channels.
std::string Wave(const std::string& ixml) {
  Bytes bext(std::string("Street noise"));
  bext.PadTo(256).Text("Recorder").PadTo(320);                // description; originator, reference
  bext.Text("2021-03-04").Text("05-06-07").U32LE(172800000);  // one hour since midnight
  bext.U32LE(0).PadTo(602);
  return Riff("WAVE", {Chunk("fmt ", WaveFormat(1, 2, 48000, 24)), Chunk("bext", bext),
                       Chunk("data", Bytes().Fill(288'000)), Chunk("iXML", Bytes(ixml))});
}

TEST(RiffReader, ReadsABroadcastWave) {
  const auto result = ReadWith(
      kRiffReader, Wave("<BWFXML><TAPE>T1</TAPE><SCENE>12A</SCENE><TAKE>3</TAKE><NOTE>loud</NOTE>"
                        "<CIRCLED>TRUE</CIRCLED><SPEED><TIMECODE_RATE>30000/1001</TIMECODE_RATE>"
                        "<TIMECODE_FLAG>DF</TIMECODE_FLAG></SPEED></BWFXML>"));
  EXPECT_EQ(Facts(result),
            "CreateDate=2021-03-04T05:06:07\n"
            "audioSampleRate=48000\n"
            "audioSampleType=24Int\n"
            "audioChannelType=Stereo\n"
            "audioCompressor=PCM\n"
            "fileDataRate=289/1000\n"
            "startTimecode=01;00;00;00 2997DropTimecode\n"
            "duration=48000 @ 1/48000\n");
  EXPECT_EQ(TextFacts(result),
            "description=Street noise\n"
            "tapeName=T1\n"
            "scene=12A\n"
            "takeNumber=3\n"
            "good=True\n"
            "logComment=loud\n");
  EXPECT_EQ(result.reads, 1) << "the chunks after the audio";
}

TEST(RiffReader, ReadsTheTimeStampOfIXML) {
  const auto start = [](const std::string& speed) {
    return ReadWith(kRiffReader, Wave("<BWFXML><SPEED>" + speed + "</SPEED></BWFXML>"))
        .Field("startTimecode", kNsDM, "timeValue");
  };
  const std::string rate = "<TIMECODE_RATE>25/1</TIMECODE_RATE>";
  const std::string low = "<TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO>";
  EXPECT_EQ(start(rate + low + "96000</TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO>"), "00:00:02:00");
  EXPECT_EQ(start("<TIMECODE_RATE>0/0</TIMECODE_RATE>"), "");
  EXPECT_EQ(start("<TIMECODE_RATE>-1</TIMECODE_RATE>"), "");
  EXPECT_EQ(start(rate + low + "18446744073709551615</TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO>"), "");
  EXPECT_EQ(ReadWith(kRiffReader, Wave("<BWFXML><TAPE>no end")).Get(kNsDM, "tapeName"), "");
}

TEST(RiffReader, ReadsTakesOfRecordersWithoutIXML) {
  const auto read = [](const std::string& description, const std::string& ixml = {}) {
    return ReadWith(kRiffReader, sorvik_test::MadeRecording({.ixml = ixml,
                                                             .start = 3600 * 48000ULL,
                                                             .originator = "Rec 8",
                                                             .description = description}));
  };
  const auto start = [](const sorvik_test::ReadResult& result) {
    return result.Field("startTimecode", kNsDM, "timeValue");
  };
  const auto result = read("sSPEED=029.970-DF\r\nsTAKE=3\nzSCENE=12A\r\nsTAPE=R1\nsNOTE=\nTAKE=9");
  EXPECT_EQ(start(result), "01;00;00;00");
  EXPECT_EQ(result.Get(kNsDM, "scene"), "12A");
  EXPECT_EQ(result.Get(kNsDM, "takeNumber"), "3");
  EXPECT_EQ(result.Get(kNsDM, "tapeName"), "R1");
  EXPECT_EQ(result.Get(kNsBext, "originator"), "Rec 8");
  EXPECT_EQ(result.Get(kNsBext, "timeReference"), "172800000");
  EXPECT_EQ(start(read("sSPEED=025.000-ND")), "01:00:00:00");
  for (const char* unknown : {"", "sSPEED=", "sSPEED=25", "sSPEED=x-ND", "sSPEED=0-ND"}) {
    EXPECT_EQ(start(read(unknown)), "") << unknown;
  }
  EXPECT_EQ(read("sTAKE=3", "<TAKE>4</TAKE><NO_GOOD>TRUE</NO_GOOD>").Get(kNsDM, "takeNumber"), "4");
  EXPECT_EQ(read("", "<NO_GOOD>TRUE</NO_GOOD>").Get(kNsDM, "good"), "False");
}

TEST(RiffReader, ReadsAnID3TagInAWave) {
  Bytes tag = Bytes("ID3").U8(3).U16(0).U32(10 + 4).Text("TIT2").U32(4).U16(0).U8(3).Text("Sea");
  const Bytes header = Chunk("fmt ", WaveFormat(1, 1, 48000, 16));
  for (const char* id : {"id3 ", "ID3 "}) {
    const auto result = ReadWith(kRiffReader, Riff("WAVE", {header, Chunk(id, tag)}));
    EXPECT_EQ(TextFacts(result), "title=Sea\n") << id;
  }
}

TEST(RiffReader, FindsChunksAfterTheAudioOfRF64) {
  Bytes b;
  b.Text("RF64").U32LE(0xFFFFFFFF).Text("WAVE");
  b.Add(Chunk("ds64", Bytes().U32LE(0).U32LE(0).U32LE(4000).U32LE(0).U32LE(0).U32LE(0)));
  b.Add(Chunk("fmt ", WaveFormat(3, 1, 1000, 32)));
  b.Text("data").U32LE(4000).Fill(4000).Add(Chunk("_PMX", Bytes("<p/>")));
  const auto result = ReadWith(kRiffReader, b.str());
  EXPECT_EQ(result.output.packet, "<p/>");
  EXPECT_EQ(result.Get(kNsDM, "audioSampleType"), "32Float");
  EXPECT_EQ(result.Field("duration", kNsDM, "value"), "1000");
}

TEST(RiffReader, ReadsWebP) {
  TiffBytes t;
  const std::string exif = t.File({t.Ascii(271, "Maker")});
  const auto result = ReadWith(
      kRiffReader, Riff("WEBP", {Chunk("VP8X", Bytes().Fill(10)), Chunk("EXIF", Bytes(exif)),
                                 Chunk("XMP ", Bytes("<p/>"))}));
  EXPECT_EQ(result.output.packet, "<p/>");
  EXPECT_EQ(Facts(result), "Make=Maker\nvideoFrameSize=1x1 pixel\n");
}

TEST(RiffReader, GivesTheSizeOfWebPAsShown) {
  TiffBytes t;
  const Bytes turned = Chunk("EXIF", Bytes(t.File({t.Shorts(274, {6})})));
  const Bytes canvas = Chunk("VP8X", Bytes().Fill(4).Hex("2B0100 C70000"));  // 300, 200
  const Bytes lossless = Chunk("VP8L", Bytes().Hex("2F 2BC13100"));
  const Bytes lossy = Chunk("VP8 ", Bytes().Hex("000000 9D012A 2C41 C840"));  // with scales
  for (const Bytes& picture : {canvas, lossless, lossy}) {
    EXPECT_EQ(Facts(ReadWith(kRiffReader, Riff("WEBP", {picture}))),
              "videoFrameSize=300x200 pixel\n");
  }
  EXPECT_EQ(Facts(ReadWith(kRiffReader, Riff("WEBP", {canvas, lossy, turned}))),
            "videoFrameSize=200x300 pixel\n");
}

// Format tags as registered in RFC 2361 and later by their owners.
TEST(RiffReader, NamesWaveFormats) {
  for (const auto& [tag, name] :
       {std::pair(0x0002u, "ADPCM"), std::pair(0x0003u, "PCM"), std::pair(0x0006u, "A-law"),
        std::pair(0x0007u, "mu-law"), std::pair(0x0011u, "ADPCM"), std::pair(0x0050u, "MPEG"),
        std::pair(0x0055u, "MPEG"), std::pair(0x00FFu, "AAC"), std::pair(0x1600u, "AAC"),
        std::pair(0x1610u, "AAC"), std::pair(0x2000u, "AC3"), std::pair(0x2001u, "DTS"),
        std::pair(0x0012u, "")}) {
    const std::string file = Riff("WAVE", {Chunk("fmt ", WaveFormat(tag, 2, 48000, 16))});
    EXPECT_EQ(ReadWith(kRiffReader, file).Get(kNsDM, "audioCompressor"), name) << tag;
  }
}

TEST(RiffReader, SurvivesTruncationAndCorruption) {
  ReadDamaged(kRiffReader, Avi({List("INFO", {Chunk("INAM", Bytes("T"))})}));
  ReadDamaged(kRiffReader,
              Riff("WAVE", {Chunk("fmt ", WaveFormat(0xFFFE, 2, 48000, 24)),
                            Chunk("bext", Bytes("short")), Chunk("data", Bytes("x"))}));
  // Endless empty chunks, and nested lists.
  Bytes empty;
  for (int i = 0; i < 50'000; ++i) empty.Text("JUNK").U32LE(0);
  ReadWith(kRiffReader, Riff("AVI ", {empty}));
  Bytes nested;
  for (int i = 0; i < 1000; ++i) nested = List("hdrl", {nested});
  ReadWith(kRiffReader, Riff("AVI ", {nested}));
}

TEST(RiffReader, MatchesExiftoolOnSamples) {
  const auto camera = ReadSample("xmp/exiftool-RIFF.avi");
  const auto dv = ReadSample("hdv/SYNTHETIC/dv-type2-ntsc-synthetic.avi");
  const auto webp = ReadSample("xmp/exiftool-RIFF.webp");
  if (!camera || !dv || !webp) GTEST_SKIP() << "samples not found";
  const auto result = ReadWith(kRiffReader, *camera);
  EXPECT_EQ(Facts(result),
            "CreateDate=2003-03-10T15:04:43\n"
            "CreatorTool=CanonMVI01\n"
            "videoFrameRate=15\n"
            "videoPixelDepth=8Int\n"
            "videoPixelAspectRatio=1/1\n"
            "videoCompressor=Motion JPEG\n"
            "audioSampleRate=11024\n"
            "audioSampleType=8Int\n"
            "audioChannelType=Mono\n"
            "audioCompressor=PCM\n"
            "software=CanonMVI01\n"
            "videoFrameSize=320x240 pixel\n"
            "duration=233 @ 1/15\n");
  EXPECT_FALSE(result.output.packet.empty());
  EXPECT_FALSE(ReadWith(kRiffReader, *webp).output.packet.empty());

  // The first frame contains pixel aspect and field order, but is read only if they are wanted.
  EXPECT_EQ(ReadWith(kRiffReader, *dv).Get(kNsDM, "videoPixelAspectRatio"), "10/11");
  WantedProperties wanted = WantedProperties::None();
  wanted.Add(kNsDM, "duration");
  const auto plain = ReadWith(kRiffReader, *dv, {}, wanted);
  EXPECT_EQ(plain.Get(kNsDM, "videoPixelAspectRatio"), "8/9") << "from the header";
  EXPECT_EQ(plain.Field("duration", kNsDM, "value"), "3");
}

// Type 1 DV in AVI has one stream, whose frames contain the audio.
TEST(RiffReader, ReadsAudioOfFramesForAnyWantedFact) {
  const auto frames = ReadSample("hdv/SYNTHETIC/raw-pal-16x9-synthetic.dv");
  if (!frames) GTEST_SKIP() << "samples not found";
  const std::string file =
      Riff("AVI ", {List("hdrl", {MainHeader(40000, 1), Stream("iavs", "dvsd", 1, 25, 1, {}),
                                  Stream("vids", "dvsd", 1, 25, 1, {Bitmap(720, 576, "dvsd")})}),
                    List("movi", {Chunk("00dc", Bytes(frames->substr(0, 144'000)))})});
  for (const char* name : {"audioCompressor", "audioSampleRate"}) {
    WantedProperties wanted = WantedProperties::None();
    wanted.Add(kNsDM, name);
    EXPECT_NE(ReadWith(kRiffReader, file, {}, wanted).Get(kNsDM, name), "") << name;
  }
}

}  // namespace
