// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/IsoBytes.h"
#include "support/ReadWith.h"
#include "support/TiffBytes.h"
#include "xmp/readers/IsoMediaReader.h"

namespace {

using namespace Sorvik::xmp;
using namespace sorvik_test;

Bytes Movie(std::uint32_t timecodeAt) {
  const Bytes boxes[] = {Box("pasp", Bytes().U32(4).U32(3)), Box("fiel", Bytes().U8(2).U8(9)),
                         Box("colr", Bytes().Text("nclc").U16(1).U16(1).U16(1))};
  return Box(
      "moov",
      {MovieHeader(600, 6006),
       Track("vide", MediaHeader(30000, 300 * 1001),
             {Descriptions(VideoEntry("avc1", 1440, 1080, {std::begin(boxes), std::end(boxes)})),
              Durations({{300, 1001}}), Sizes(300)},
             TrackHeader(1920, 1080)),
       Track("soun", MediaHeader(48000, 480480),
             {Descriptions(SoundEntry("in24", 1, 16, 48000)), Durations({{480480, 1}})}),
       Track("soun", MediaHeader(48000, 480480),
             {Descriptions(SoundEntry("in24", 1, 16, 48000)), Durations({{480480, 1}})}),
       Track("tmcd", MediaHeader(30000, 300 * 1001),
             {Descriptions(TimecodeEntry(true, 30000, 1001, 30)), Durations({{1, 300300}}),
              Sizes(1), Chunks(timecodeAt)})});
}

TEST(IsoMediaReader, ReadsTheTracksOfAMovie) {
  const std::size_t start = FileType().size() + 8;
  const Bytes media = Box("mdat", Bytes().U32(111582).Fill(100));  // 01;02;03;04
  Bytes file = FileType().Add(media).Add(Movie(static_cast<std::uint32_t>(start)));
  const auto result = ReadWith(kIsoMediaReader, file.str());
  EXPECT_TRUE(result.recognised);
  EXPECT_TRUE(result.output.hasNative);
  EXPECT_EQ(Facts(result),
            "CreateDate=2021-03-04T05:06:07Z\n"
            "ModifyDate=2021-03-04T05:06:08Z\n"
            "videoFrameRate=29.97\n"
            "videoPixelAspectRatio=4/3\n"
            "videoColorSpace=CCIR-709\n"
            "videoCompressor=AVC\n"
            "videoFieldOrder=Upper\n"
            "audioSampleRate=48000\n"
            "audioSampleType=24Int\n"
            "audioChannelType=Stereo\n"
            "audioCompressor=PCM\n"
            "videoFrameSize=1440x1080 pixel\n"
            "startTimecode=01;02;03;04 2997DropTimecode\n"
            "duration=300 @ 1001/30000\n");
  EXPECT_EQ(TextFacts(result), "tapeName=A001C\n");
}

TEST(IsoMediaReader, SkipsMediaAndReadsTheTimecodeOnlyIfWanted) {
  constexpr std::uint32_t kMedia = 5'000'000;
  Bytes file = FileType().U32(1).Text("mdat").U64(kMedia + 16);  // size of eight bytes
  const auto timecodeAt = static_cast<std::uint32_t>(file.size() + 200'000);
  file.Fill(200'000).U32(50).Fill(kMedia - 200'004).Add(Movie(timecodeAt));

  const auto all = ReadWith(kIsoMediaReader, file.str());
  EXPECT_EQ(all.Field("startTimecode", kNsDM, "timeValue"), "00;00;01;20");
  EXPECT_EQ(all.reads, 2);
  WantedProperties wanted = WantedProperties::None();
  wanted.Add(kNsDM, "duration");
  const auto some = ReadWith(kIsoMediaReader, file.str(), {}, wanted);
  EXPECT_EQ(some.Field("duration", kNsDM, "value"), "300");
  EXPECT_TRUE(some.output.hasNative);
  EXPECT_EQ(some.reads, 1);
}

std::string FactsOfVideo(const Bytes& mediaHeader, const std::vector<Bytes>& tables,
                         std::uint32_t movieDuration = 1200) {
  const auto result = ReadWith(
      kIsoMediaReader,
      FileType()
          .Add(Box("moov", {MovieHeader(600, movieDuration), Track("vide", mediaHeader, tables)}))
          .str());
  return result.Get(kNsDM, "videoFrameRate") + ", " + result.Field("duration", kNsDM, "value") +
         " @ " + result.Field("duration", kNsDM, "scale");
}

TEST(IsoMediaReader, DerivesRatesFromSampleDurations) {
  const Bytes entry = Descriptions(VideoEntry("hvc1", 1920, 1080));
  EXPECT_EQ(FactsOfVideo(MediaHeader(24, 48), {entry, Durations({{48, 1}})}), "24, 48 @ 1/24");
  EXPECT_EQ(FactsOfVideo(MediaHeader(2997, 9900), {entry, Durations({{99, 100}})}),
            "29.97, 99 @ 1001/30000");
  EXPECT_EQ(FactsOfVideo(MediaHeader(25000, 99500), {entry, Durations({{99, 1000}, {1, 500}})}),
            "25, 100 @ 1/25")
      << "the last sample is shorter";
  EXPECT_EQ(FactsOfVideo(MediaHeader(600, 1200),
                         {entry, Durations({{30, 20}, {10, 30}, {20, 15}}), Sizes(60)}),
            "30, 1200 @ 1/600")
      << "variable rate: its mean, and the duration of the movie";
  EXPECT_EQ(FactsOfVideo(MediaHeader(90000, 0), {entry, Durations({})}), ",  @ ")
      << "no samples: the first segment of a stream";
  EXPECT_EQ(FactsOfVideo(MediaHeader(0, 0), {entry, Durations({{5, 0}})}, 0), ",  @ ");
}

TEST(IsoMediaReader, ReadsAudioDescriptions) {
  const auto sound = [](const std::vector<Bytes>& entries) {
    std::vector<Bytes> boxes = {MovieHeader(48000, 96000)};
    for (const Bytes& entry : entries) {
      boxes.push_back(Track("soun", MediaHeader(48000, 96000), {Descriptions(entry)}));
    }
    return Facts(ReadWith(kIsoMediaReader, FileType().Add(Box("moov", boxes)).str()));
  };
  const std::string dates = "CreateDate=2021-03-04T05:06:07Z\nModifyDate=2021-03-04T05:06:08Z\n";
  EXPECT_EQ(sound({SoundEntry("mp4a", 2, 16, 44100), SoundEntry("ac-3", 6, 16, 48000)}),
            dates +
                "audioSampleRate=44100\naudioSampleType=Compressed\naudioChannelType=Stereo\n"
                "audioCompressor=AAC\nduration=96000 @ 1/48000\n");
  Bytes second;  // version 2 of the description: rate as a float, channels, bits
  second.Fill(6).U16(1).U16(2).Fill(6).U16(3).U16(16).U16(0xFFFE).U16(0).U32(0x10000).U32(72);
  second.U64(0x40F7700000000000).U32(6).U32(0x7F000000).U32(32).Fill(12);
  EXPECT_EQ(sound({Box("fl32", second)}),
            dates +
                "audioSampleRate=96000\naudioSampleType=32Float\naudioChannelType=5.1\n"
                "audioCompressor=PCM\nduration=96000 @ 1/48000\n");
}

// The channel types of a movie whose only audio entry contains these boxes and declares two
// channels.
std::string ChannelsWith(const Bytes& boxes) {
  const Bytes entry = SoundEntry("mp4a", 2, 16, 48000, boxes);
  const Bytes movie = Box(
      "moov",
      {MovieHeader(48000, 96000), Track("soun", MediaHeader(48000, 96000), {Descriptions(entry)})});
  return ReadWith(kIsoMediaReader, FileType().Add(movie).str()).Get(kNsDM, "audioChannelType");
}

TEST(IsoMediaReader, ReadsChannelsFromTheDecoderConfiguration) {
  const auto channels = [](const std::string& descriptor) {
    const Bytes esds = Box("esds", Bytes().Hex(descriptor));
    return ChannelsWith(esds) + " " + ChannelsWith(Box("wave", {Box("frma", Bytes("mp4a")), esds}));
  };
  const std::string head = "00000000 03808080 25 0002 00 04808080 17";
  const std::string config = " 15 000000 00010D88 00010D88 05808080 05 ";
  EXPECT_EQ(channels(head + "40" + config + "1188"), "Mono Mono");
  EXPECT_EQ(channels(head + "40" + config + "11B0"), "5.1 5.1");
  EXPECT_EQ(channels("00000000 03 20 0002 E0 0001 02 4142 0003 04 11 40" + config.substr(0, 28) +
                     "05 02 1188"),
            "Mono Mono");
  for (const char* unknown : {"1180", "11", "E988"}) {  // by tables, cut, parametric stereo
    EXPECT_EQ(channels(head + "40" + config + unknown), "Stereo Stereo") << unknown;
  }
  EXPECT_EQ(channels(head + "6B" + config + "1188"), " ") << "MPEG audio: entries always have two";
  EXPECT_EQ(channels("00000000 03"), "Stereo Stereo");
  EXPECT_EQ(ChannelsWith(Box("dac3", Bytes().Hex("103DC0"))), "5.1");
  EXPECT_EQ(ChannelsWith(Box("dec3", Bytes().Hex("0C00 20 02 00"))), "Mono");
  EXPECT_EQ(ChannelsWith(Box("dac3", Bytes().Hex("10"))), "Stereo") << "truncated";
}

Bytes UserText(const std::string& type, const std::string& text) {
  return Box(type, Bytes().U16(text.size()).U16(0).Text(text));
}
Bytes Item(const Bytes& type, std::uint32_t kind, const std::string& value) {
  const Bytes data = Box("data", Bytes().U32(kind).U32(0).Text(value));
  return Box(type.str(), data);
}

TEST(IsoMediaReader, ReadsTexts) {
  const Bytes key1 = Bytes().U32(8 + 28).Text("mdta").Text("com.apple.quicktime.software");
  const Bytes key2 = Bytes().U32(8 + 36).Text("mdta").Text("com.apple.quicktime.location.ISO6709");
  const Bytes key3 = Bytes().U32(8 + 32).Text("mdta").Text("com.apple.quicktime.creationdate");
  const Bytes keyed = Box(
      "meta", {Handler("mdta"), Box("keys", Bytes().U32(0).U32(3).Add(key1).Add(key2).Add(key3)),
               Box("ilst", {Item(Bytes().U32(1), 1, "14.4"),
                            Item(Bytes().U32(2), 1, "-48.2082+016.3738+171.500/"),
                            Item(Bytes().U32(3), 1, "2021-03-04T06:06:07+0100"),
                            Item(Bytes().U32(4), 1, "no such key")})});
  const Bytes items = Box("meta", Bytes()
                                      .U32(0)
                                      .Add(Handler("mdir"))
                                      .Add(Box("ilst", {Item(Bytes("\xA9nam"), 1, "Title"),
                                                        Item(Bytes("\xA9"
                                                                   "alb"),
                                                             2, std::string("\0A\0l", 4)),
                                                        Item(Bytes("covr"), 13, "picture")})));
  const Bytes user = Box("udta", {UserText("\xA9mak", "Maker"), UserText("\xA9mod", "M1"),
                                  UserText("\xA9"
                                           "cmt",
                                           "Take two"),
                                  Box("auth", Bytes().U32(0).U16(0).Text("A. One").U8(0)),
                                  Box("cprt", Bytes().U32(0).U16(0).Hex("FEFF 00A9 0041")),
                                  Box("XMP_", Bytes("<p/>")), items});
  const auto result = ReadWith(
      kIsoMediaReader, FileType().Add(Box("moov", {MovieHeader(600, 0), user, keyed})).str());
  EXPECT_EQ(result.output.packet, "<p/>");
  EXPECT_EQ(Facts(result),
            "CreateDate=2021-03-04T06:06:07+01:00\n"
            "ModifyDate=2021-03-04T05:06:08Z\n"
            "CreatorTool=14.4\n"
            "Make=Maker\n"
            "Model=M1\n"
            "software=14.4\n"
            "GPSAltitude=171500/1000\n"
            "GPSAltitudeRef=0\n"
            "GPSLatitude=48,12.49200S\n"
            "GPSLongitude=16,22.42800E\n");
  EXPECT_EQ(TextFacts(result),
            "title=Title\n"
            "rights=\xC2\xA9"
            "A\n"
            "creator=A. One\n"
            "copyright=\xC2\xA9"
            "A\n"
            "album=Al\n"
            "logComment=Take two\n");
}

TEST(IsoMediaReader, ReadsThePacketOfTheUUIDBox) {
  const Bytes uuid = Bytes().Hex("BE7ACFCB 97A942E8 9C719994 91E3AFAC");
  const Bytes other = Box("uuid", Bytes().Fill(16).Text("<no/>"));
  const std::string file = FileType()
                               .Add(other)
                               .Add(Box("mdat", Bytes().Fill(100'000)))
                               .Add(Box("uuid", Bytes(uuid).Text("<p/>")))
                               .str();
  const auto result = ReadWith(kIsoMediaReader, file);
  EXPECT_EQ(result.output.packet, "<p/>");
  EXPECT_FALSE(result.output.hasNative) << "no movie";
  EXPECT_EQ(result.reads, 1);
  // A box of size 0 extends to the end of the file.
  EXPECT_EQ(ReadWith(kIsoMediaReader, FileType().U32(0).Text("uuid").Add(uuid).Text("<q/>").str())
                .output.packet,
            "<q/>");
}

Bytes ItemInfo(unsigned id, const std::string& type, const std::string& content = "") {
  Bytes b;
  b.U32(0x02000000).U16(id).U16(0).Text(type).U8(0);  // version 2, number, protection, type, name
  return Box("infe", content.empty() ? b : b.Text(content).U8(0));
}
// An image with three consecutive items in 'mdat'.
std::string Picture(const std::vector<std::string>& items) {
  Bytes info = Bytes().U32(0).U16(3);
  info.Add(ItemInfo(1, "mime", "text/plain")).Add(ItemInfo(2, "mime", "application/rdf+xml"));
  info.Add(ItemInfo(3, "Exif"));
  const auto meta = [&](std::uint32_t first) {
    Bytes where = Bytes().U32(0).U16(0x4400).U16(3);  // offsets and lengths of 4 bytes, no base
    for (unsigned i = 0; i < 3; ++i) {
      where.U16(i + 1).U16(0).U16(1).U32(first).U32(items[i].size());  // number, file, extents
      first += static_cast<std::uint32_t>(items[i].size());
    }
    return Box("meta", Bytes().U32(0).Add(Box("iinf", info)).Add(Box("iloc", where)));
  };
  const auto start = static_cast<std::uint32_t>(FileType().size() + meta(0).size() + 8);
  return FileType().Add(meta(start)).Add(Box("mdat", Bytes(items[0] + items[1] + items[2]))).str();
}

TEST(IsoMediaReader, ReadsXMPAndExifItemsOfImages) {
  TiffBytes t;
  const std::string exif =
      Bytes().U32(6).Text(std::string_view("Exif\0\0", 6)).str() + t.File({t.Ascii(271, "Maker")});
  const std::string file = Picture({"<no/>", "<p/>", exif});
  const auto result = ReadWith(kIsoMediaReader, file);
  EXPECT_EQ(result.output.packet, "<p/>");
  EXPECT_TRUE(result.output.hasNative);
  EXPECT_EQ(Facts(result), "Make=Maker\n");
  ReadDamaged(kIsoMediaReader, file);

  const auto sample = ReadSample("xmp/bep-multi-xmp.heic");
  if (!sample) GTEST_SKIP() << "samples not found";
  EXPECT_NE(ReadWith(kIsoMediaReader, *sample).output.packet.find("GCamera:MotionPhoto"),
            std::string::npos);
}

TEST(IsoMediaReader, SurvivesTruncationAndCorruption) {
  const Bytes media = Box("mdat", Bytes().U32(111582));
  ReadDamaged(kIsoMediaReader, FileType().Add(media).Add(Movie(32)).str());
  // Invalid sizes: smaller than the header, past the end, past the parent box, wrapping.
  const auto with = [](std::uint64_t size) {
    return ReadWith(kIsoMediaReader, FileType().U32(1).Text("free").U64(size).Add(Movie(32)).str())
        .output.hasNative;
  };
  EXPECT_FALSE(with(0));
  EXPECT_FALSE(with(15));
  EXPECT_TRUE(with(16));
  EXPECT_FALSE(with(UINT64_MAX));
  EXPECT_FALSE(with(UINT64_MAX - 7));
  // A thousand small boxes far apart, and as many tracks, cost a bounded number of reads.
  Bytes scattered = FileType();
  for (int i = 0; i < 200; ++i) scattered.Add(Box("free", Bytes().Fill(70'000)));
  EXPECT_LE(ReadWith(kIsoMediaReader, scattered.str()).reads, 96);
  std::vector<Bytes> tracks(300, Track("vide", MediaHeader(25, 25), {Durations({{25, 1}})}));
  ReadWith(kIsoMediaReader, FileType().Add(Box("moov", tracks)).str());
}

TEST(IsoMediaReader, MatchesExiftoolOnSamples) {
  const auto mov = ReadSample("xmp/exiftool-QuickTime.mov");
  const auto mp4 = ReadSample("xmp/derived-exiftool-xmpDM.mp4");
  if (!mov || !mp4) GTEST_SKIP() << "samples not found";
  const auto result = ReadWith(kIsoMediaReader, *mov);
  EXPECT_EQ(Facts(result),
            "CreateDate=2005-08-11T14:03:54Z\n"
            "ModifyDate=2010-07-30T15:43:59Z\n"
            "videoFrameRate=30\n"
            "videoPixelDepth=8Int\n"
            "videoPixelAspectRatio=1/1\n"
            "videoCompressor=Motion JPEG\n"
            "audioSampleRate=7875\n"
            "audioSampleType=8Int\n"
            "audioChannelType=Mono\n"
            "audioCompressor=PCM\n"
            "videoFrameSize=320x240 pixel\n"
            "duration=149 @ 1/30\n");
  EXPECT_FALSE(result.output.packet.empty()) << "in the user data";
  EXPECT_FALSE(ReadWith(kIsoMediaReader, *mp4).output.packet.empty()) << "in a separate box";
}

}  // namespace
