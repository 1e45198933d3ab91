// SPDX-License-Identifier: MIT
// Movies of phones, cameras and streaming: clocks, fragments, codec configurations, boxes of
// makers.
#include <gtest/gtest.h>

#include "support/IsoBytes.h"
#include "support/ReadWith.h"
#include "support/TempTree.h"
#include "support/TiffBytes.h"
#include "xmp/readers/IsoMediaReader.h"

namespace {

using namespace Sorvik::xmp;
using namespace sorvik_test;

std::string RateAndDuration(const ReadResult& result) {
  return result.Get(kNsDM, "videoFrameRate") + ", " + result.Field("duration", kNsDM, "value") +
         " @ " + result.Field("duration", kNsDM, "scale");
}

ReadResult ReadMovie(const std::vector<Bytes>& boxes) {
  return ReadWith(kIsoMediaReader, FileType().Add(Box("moov", boxes)).str());
}

using Runs = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

// A track of `times` repetitions of these runs.
std::string WithRuns(std::uint32_t timescale, const Runs& runs, unsigned times, Runs last = {}) {
  Runs all;
  std::uint32_t samples = 0;
  std::uint32_t units = 0;
  for (unsigned i = 0; i < times; ++i) all.insert(all.end(), runs.begin(), runs.end());
  all.insert(all.end(), last.begin(), last.end());
  for (const auto& [count, each] : all) {
    samples += count;
    units += count * each;
  }
  return RateAndDuration(ReadMovie(
      {MovieHeader(600, 600 * (units / timescale)),
       Track("vide", MediaHeader(timescale, units),
             {Descriptions(VideoEntry("avc1", 640, 360)), Durations(all), Sizes(samples)})}));
}

TEST(IsoMovies, ConstantRatesOnCoarseClocks) {
  EXPECT_EQ(WithRuns(90000, {{3, 3754}, {1, 3753}}, 100), "23.976, 400 @ 1001/24000");
  EXPECT_EQ(WithRuns(90000, {{1, 1501}, {1, 1502}}, 90), "59.94, 180 @ 1001/60000");
  EXPECT_EQ(WithRuns(1000, {{1, 16}, {2, 17}}, 100), "60, 300 @ 1/60");
  EXPECT_EQ(WithRuns(1000, {{2, 33}, {1, 34}}, 10, {{1, 90}}), "30, 31 @ 1/30")
      << "the last sample is longer";
  EXPECT_EQ(WithRuns(600, {{49, 20}, {1, 21}}, 12), "29.97, 600 @ 1001/30000");
  EXPECT_EQ(WithRuns(90000, {{1, 2900}, {1, 3106}}, 50), "29.97, 100 @ 1001/30000")
      << "the clock of a phone";
  EXPECT_EQ(WithRuns(600, {{9, 20}, {1, 40}}, 30), "27.273, 6600 @ 1/600") << "dropped frames";
  // 64 KiB of the table are read; the mean is that of the complete track.
  EXPECT_EQ(WithRuns(90000, {{1, 3753}, {1, 3754}}, 10'000), "23.976, 20000 @ 1001/24000");
}

TEST(IsoMovies, TimecodeCountsAtTheRateOfItsClock) {
  const Bytes media = Box("mdat", Bytes().U32(107892 + 30 * 60));
  const auto movie = [&](std::uint32_t scale, std::uint32_t units, unsigned base) {
    const Bytes track = Track("tmcd", MediaHeader(scale, units * 10),
                              {Descriptions(TimecodeEntry(false, scale, units, base)),
                               Durations({{1, 10}}), Sizes(1), Chunks(28)});
    return ReadWith(kIsoMediaReader,
                    FileType().Add(media).Add(Box("moov", {MovieHeader(600, 0), track})).str())
        .Field("startTimecode", kNsDM, "timeValue");
  };
  EXPECT_EQ(movie(90000, 3003, 29), "01:00:56:12") << "a camera that rounds down";
  EXPECT_EQ(movie(25, 1, 25), "01:13:07:17");
  EXPECT_EQ(movie(0, 0, 30), "01:00:56:12") << "no clock";
}

TEST(IsoMovies, TimecodeOfTheDayDecidesBetweenRates) {
  // The movie header has 05:06:07.
  const auto movie = [](std::uint32_t frames) {
    const Bytes track =
        Track("tmcd", MediaHeader(90000, 3003),
              {Descriptions(TimecodeEntry(false, 90000, 3003, 29)), Sizes(1), Chunks(28)});
    return ReadWith(kIsoMediaReader, FileType()
                                         .Add(Box("mdat", Bytes().U32(frames)))
                                         .Add(Box("moov", {MovieHeader(600, 0), track}))
                                         .str())
        .Field("startTimecode", kNsDM, "timeValue");
  };
  constexpr std::uint32_t kTime = 5 * 3600 + 6 * 60 + 7;
  EXPECT_EQ(movie(kTime * 29), "05:06:07:00");
  EXPECT_EQ(movie(kTime * 30 + 2), "05:06:07:02");
  EXPECT_EQ(movie(900), "00:00:30:00") << "neither";
}

TEST(IsoMovies, FieldOrderOfAVCIsInTheFirstFrame) {
  const Bytes avc = Box("avcC", Bytes().Hex("014D401E FFE1001C 674D401E F405A126 FFC01000 0B440000"
                                            "03000400 000300C8 7C50AA80 01000468 DE0FC8"));
  const auto order = [&](const char* timing, const WantedProperties& wanted) {
    const Bytes media =
        Box("mdat", Bytes().Hex("00000006 0605 02 FFFF80").Hex(timing).Hex("00000004 6588822C"));
    const Bytes track = Track("vide", MediaHeader(25, 25),
                              {Descriptions(VideoEntry("avc1", 720, 576, {avc})),
                               Durations({{25, 1}}), Sizes(25), Chunks(28)});
    return ReadWith(kIsoMediaReader,
                    FileType().Add(media).Add(Box("moov", {MovieHeader(600, 600), track})).str(),
                    {}, wanted)
        .Get(kNsDM, "videoFieldOrder");
  };
  EXPECT_EQ(order("00000005 0601013280", WantedProperties::All()), "Upper");
  EXPECT_EQ(order("00000005 0601014280", WantedProperties::All()), "Lower");
  EXPECT_EQ(order("00000005 0601010280", WantedProperties::All()), "Progressive");
  EXPECT_EQ(order("00000005 0601014280", WantedProperties::None()), "");
}

TEST(IsoMovies, DepthOfVC3IsInTheFirstFrame) {
  const auto depth = [](const char* prefix, unsigned code) {
    Bytes frame = Bytes().Hex(prefix).PadTo(33).U8(code << 5).Fill(10);
    const Bytes track =
        Track("vide", MediaHeader(25, 25),
              {Descriptions(VideoEntry("AVdn", 1920, 1080)), Sizes(25), Chunks(28)});
    return ReadWith(kIsoMediaReader, FileType()
                                         .Add(Box("mdat", frame))
                                         .Add(Box("moov", {MovieHeader(600, 600), track}))
                                         .str())
        .Get(kNsDM, "videoPixelDepth");
  };
  EXPECT_EQ(depth("00000280 01", 1), "8Int");
  EXPECT_EQ(depth("00000280 03", 2), "Other");
  EXPECT_EQ(depth("0000038C 03", 0), "");
  EXPECT_EQ(depth("12345678 03", 1), "");
}

TEST(IsoMovies, RatesOfSoundAreInTheDecoderConfiguration) {
  const auto rate = [](const std::string& codec, const Bytes& box) {
    return ReadMovie({MovieHeader(600, 600),
                      Track("soun", MediaHeader(96000, 96000),
                            {Descriptions(SoundEntry(codec, 2, 16, 0, box)), Sizes(1)})})
        .Get(kNsDM, "audioSampleRate");
  };
  EXPECT_EQ(
      rate("fLaC", Box("dfLa", Bytes().Hex("00000000 80000022 10001000 000000000000 17700170"))),
      "96000");
  EXPECT_EQ(
      rate("mp4a", Box("esds", Bytes().Hex("00000000 0313000100 040B 40150000000000000000000000"
                                           "0502 1010"))),
      "96000");
}

TEST(IsoMovies, DescriptorsNameTheCodecOfMPEG4Entries) {
  const auto esds = [](const char* object) {
    return Box("esds", Bytes().Hex("00000000 0313000100 040D").Hex(object).Fill(12));
  };
  const auto sound = [&](const char* object) {
    const ReadResult result = ReadMovie(
        {MovieHeader(600, 600),
         Track("soun", MediaHeader(48000, 48000),
               {Descriptions(SoundEntry("mp4a", 2, 16, 48000, esds(object))), Sizes(1)})});
    return result.Get(kNsDM, "audioCompressor") + " " + result.Get(kNsDM, "audioChannelType");
  };
  EXPECT_EQ(sound("40"), "AAC Stereo");
  EXPECT_EQ(sound("6B"), "MPEG ");
  EXPECT_EQ(sound("A5"), "AC3 ");
  const auto video = [&](const char* object) {
    return ReadMovie({MovieHeader(600, 600),
                      Track("vide", MediaHeader(25, 25),
                            {Descriptions(VideoEntry("mp4v", 720, 576, {esds(object)})),
                             Durations({{25, 1}}), Sizes(25)})})
        .Get(kNsDM, "videoCompressor");
  };
  EXPECT_EQ(video("20"), "MPEG-4");
  EXPECT_EQ(video("61"), "MPEG-2");
  EXPECT_EQ(video("6A"), "MPEG-1");
  EXPECT_EQ(video("6C"), "Motion JPEG");
}

TEST(IsoMovies, RecordNextToAClipDescribesTheCamera) {
  TempTree tree;
  tree.File("C0001M01.XML",
            "<NonRealTimeMeta><CreationDate value='2022-02-03T04:05:06+09:00'/><Device "
            "manufacturer='Sony' modelName='ILME-FX6V' serialNo='0004000'/></NonRealTimeMeta>");
  const std::string file = FileType().Add(Box("moov", {MovieHeader(600, 600)})).str();
  const auto read = [&](const char* name, const WantedProperties& wanted) {
    return ReadWith(kIsoMediaReader, file, tree.Path(name), wanted);
  };
  const ReadResult clip = read("C0001.MP4", WantedProperties::All());
  EXPECT_EQ(clip.Get(kNsTIFF, "Model"), "ILME-FX6V");
  EXPECT_EQ(clip.Get(kNsXMP, "CreateDate"), "2022-02-03T04:05:06+09:00");
  EXPECT_EQ(clip.Get(kNsXMP, "ModifyDate"), "2021-03-04T05:06:08Z");
  EXPECT_EQ(read("C0002.MP4", WantedProperties::All()).Get(kNsTIFF, "Model"), "");
  EXPECT_EQ(read("C0001.MOV", WantedProperties::All()).Get(kNsTIFF, "Model"), "");
  WantedProperties duration = WantedProperties::None();
  duration.Add(kNsDM, "duration");
  EXPECT_EQ(read("C0001.MP4", duration).Get(kNsTIFF, "Model"), "");
}

TEST(IsoMovies, PhotographsHaveASizeButNoRate) {
  TiffBytes t;
  const std::string first = t.File({t.Ascii(271, "Canon"), t.Shorts(274, {6})});
  const auto read = [&](const std::string& version) {
    const Bytes canon = Box("uuid", Bytes()
                                        .Hex("85C0B687 820F11E0 8111F4CE 462B6A48")
                                        .Add(Box("CNCV", Bytes(version)))
                                        .Add(Box("CMT1", Bytes(first))));
    return ReadMovie(
        {canon, MovieHeader(1, 1),
         Track("vide", MediaHeader(1, 1),
               {Descriptions(VideoEntry("CRAW", 6000, 4000)), Durations({{1, 1}}), Sizes(1)})});
  };
  const ReadResult photo = read("CanonCR3_001/00.10.00/00.00.00");
  EXPECT_EQ(photo.Field("videoFrameSize", kNsDimensions, "w"), "4000");
  EXPECT_EQ(photo.Get(kNsTIFF, "Make"), "Canon");
  EXPECT_EQ(RateAndDuration(photo), ",  @ ");
  EXPECT_EQ(photo.Get(kNsDM, "videoCompressor"), "");
  const ReadResult movie = read("CanonCRM0001/02.09.00/00.00.00");
  EXPECT_EQ(movie.Field("videoFrameSize", kNsDimensions, "w"), "6000");
  EXPECT_EQ(movie.Get(kNsDM, "videoFrameRate"), "1");
}

// moof: a sequence number; for one track the start, and the durations of the samples or their
// default.
Bytes Fragment(std::uint32_t track, std::uint64_t start, std::uint32_t samples,
               const std::vector<std::uint32_t>& units = {}, std::uint32_t defaultUnits = 0) {
  const Bytes header = defaultUnits != 0
                           ? Box("tfhd", Bytes().U32(0x8).U32(track).U32(defaultUnits))
                           : Box("tfhd", Bytes().U32(0).U32(track));
  Bytes run = Bytes().U32(units.empty() ? 0x1 : 0x301).U32(samples).U32(8);
  for (const std::uint32_t each : units) run.U32(each).U32(1000);
  return Box(
      "moof",
      {Box("mfhd", Bytes().U64(1)),
       Box("traf", {header, Box("tfdt", Bytes().U32(1 << 24).U64(start)), Box("trun", run)})});
}
Bytes FragmentedMovie(std::uint32_t timescale, const Bytes& mvex) {
  const Bytes header = Box("tkhd", Bytes().U32(1).U64(0).U32(7).Fill(60).U64(0));
  return FileType().Add(Box(
      "moov", {MovieHeader(600, 6'000'000),  // of an earlier state of the file
               Track("vide", MediaHeader(timescale, 90),
                     {Descriptions(VideoEntry("avc1", 640, 360)), Durations({}), Sizes(0)}, header),
               mvex}));
}
Bytes Defaults(std::uint32_t units) {
  return Box("mvex", {Box("trex", Bytes().U32(0).U32(7).U32(1).U32(units).U64(0))});
}

TEST(IsoMovies, FragmentsDescribeTheirSamples) {
  const auto read = [](const Bytes& file) { return ReadWith(kIsoMediaReader, file.str()); };
  const Bytes media = Box("mdat", Bytes().Fill(300'000));
  Bytes file = FragmentedMovie(24000, Defaults(1001));
  EXPECT_EQ(RateAndDuration(read(file)), ",  @ ") << "only the first segment of a stream";
  file.Add(Fragment(7, 5000, 48));
  EXPECT_EQ(RateAndDuration(read(file)), "23.976, 48 @ 1001/24000");

  for (std::uint64_t i = 1; i < 20; ++i) {
    file.Add(media).Add(Fragment(7, 5000 + i * 48048, 48));
  }
  file.Add(Box("uuid", Bytes().Hex("BE7ACFCB 97A942E8 9C719994 91E3AFAC").Text("<p/>")));
  const auto long_ = read(file);
  EXPECT_EQ(RateAndDuration(long_), "23.976, 960 @ 1001/24000");
  EXPECT_EQ(long_.output.packet, "<p/>") << "after the last fragment";
  EXPECT_LE(long_.reads, 4) << "head and tail only";

  // The random access index has the last fragment even if it isn't near the end.
  const std::size_t last = file.size();
  file.Add(Fragment(7, 5000 + 20 * 48048, 24)).Add(media);
  file.Add(
      Box("mfra", {Box("tfra", Bytes().U32(1 << 24).U32(7).U32(0).U32(1).U64(0).U64(last).U24(0)),
                   Box("mfro", Bytes().U32(0).U32(67))}));
  EXPECT_EQ(RateAndDuration(read(file)), "23.976, 984 @ 1001/24000");

  // The delay of the encoder in the first sample.
  EXPECT_EQ(
      RateAndDuration(read(
          FragmentedMovie(30000, Defaults(0)).Add(Fragment(7, 0, 4, {1641, 1001, 1001, 1001})))),
      "29.97, 5 @ 1001/30000");
  // Durations of each sample, on a coarse clock, then varying.
  EXPECT_EQ(RateAndDuration(read(FragmentedMovie(1000, Defaults(0))
                                     .Add(Fragment(7, 0, 4, {33, 33, 34, 33}))
                                     .Add(Fragment(7, 133, 4, {33, 34, 33, 33})))),
            "30, 8 @ 1/30");
  EXPECT_EQ(RateAndDuration(
                read(FragmentedMovie(1000, Defaults(0)).Add(Fragment(7, 0, 3, {20, 50, 20})))),
            "33.333, 90 @ 1/1000");
  EXPECT_EQ(
      RateAndDuration(read(FragmentedMovie(1000, Defaults(0)).Add(Fragment(7, 0, 2, {}, 40)))),
      "25, 2 @ 1/25");
}

TEST(IsoMovies, SegmentIndexHasTheDuration) {
  Bytes index = Bytes().U32(0).U32(7).U32(1000).U64(0).U16(0).U16(2);
  index.U32(100).U32(2000).U32(0).U32(100).U32(1000).U32(0);
  Bytes start = Box("moof", {Box("mfhd", Bytes().U64(1)),
                             Box("traf", {Box("tfhd", Bytes().U32(0).U32(7)),
                                          Box("trun", Bytes().U32(0x1).U32(50).U32(8))})});
  const Bytes file = FragmentedMovie(25, Defaults(1))
                         .Add(Box("sidx", index))
                         .Add(start)
                         .Add(Box("mdat", Bytes().Fill(300'000)))
                         .Add(start);
  EXPECT_EQ(RateAndDuration(ReadWith(kIsoMediaReader, file.str())), "25, 75 @ 1/25")
      << "fragments without a time";
  ReadDamaged(kIsoMediaReader, FragmentedMovie(25, Defaults(1))
                                   .Add(Box("sidx", index))
                                   .Add(start)
                                   .Add(Fragment(7, 9, 1, {33}))
                                   .str());
}

// "depth, field order, aspect, colour space".
std::string Picture(const std::string& codec, const std::vector<Bytes>& boxes,
                    const Bytes& header = TrackHeader(1920, 1080), unsigned width = 1920,
                    unsigned height = 1080) {
  const auto result =
      ReadMovie({MovieHeader(600, 0), Track("vide", MediaHeader(25, 25),
                                            {Descriptions(VideoEntry(codec, width, height, boxes)),
                                             Durations({{25, 1}}), Sizes(25)},
                                            header)});
  return result.Get(kNsDM, "videoPixelDepth") + ", " + result.Get(kNsDM, "videoFieldOrder") + ", " +
         result.Get(kNsDM, "videoPixelAspectRatio") + ", " + result.Get(kNsDM, "videoColorSpace");
}

TEST(IsoMovies, CodecConfigurationsDescribeThePicture) {
  // High 4:2:2 with 10 bits, 1920x1080, frames only, aspect ratio 4:3, primaries of BT.709.
  const Bytes avc =
      Box("avcC", Bytes().Hex("017A0028FFE1 001E 677A0028B6CD940780227E270E6A0202028000000300800000"
                              "19078C18CB 01 0006 68EBE3CB22C0 FEFAFA00"));
  EXPECT_EQ(Picture("avc1", {avc}), "Other, Progressive, 4/3, CCIR-709");
  EXPECT_EQ(
      Picture("avc1", {avc, Box("pasp", Bytes().U32(1).U32(1)), Box("fiel", Bytes().U8(2).U8(9))}),
      "Other, Upper, 1/1, CCIR-709");
  EXPECT_EQ(
      Picture("av01", {Box("av1C", Bytes().Hex("81210000 0A0D2000 000CC4FF 6736BE48 086801"))}),
      "8Int, Progressive, 1/1, CCIR-709");
  EXPECT_EQ(
      Picture("hvc1", {Box("hvcC", Bytes().Hex("01 02 20000000 900000000000 78 F000 FC FD FA FA "
                                               "0000 0F 00"))}),
      "Other, Progressive, 1/1, ");
  EXPECT_EQ(
      Picture("hvc1", {Box("hvcC", Bytes().Hex("01 01 60000000 700000000000 78 F000 FC FD F8 F8 "
                                               "0000 0F 00"))}),
      "8Int, , 1/1, ")
      << "interlaced";
  EXPECT_EQ(Picture("av01", {Box("av1C", Bytes().Hex("81 04 4C 00"))}),
            "Other, Progressive, 1/1, ");
  EXPECT_EQ(Picture("vp09", {Box("vpcC", Bytes().Hex("01000000 00 1F 80 01 01 01 0000"))}),
            "8Int, Progressive, 1/1, CCIR-709");
  EXPECT_EQ(Picture("vvc1", {Box("vvcC", Bytes().Hex("00000000 FF 00 65 5F"))}), "Other, , 1/1, ");
  EXPECT_EQ(Picture("apcn", {Box("colr", Bytes().Text("nclx").U16(9).U16(16).U16(9).U8(0))}),
            "Other, , 1/1, BT.2020");
  EXPECT_EQ(Picture("apcn", {Box("colr", Bytes().Text("nclc").U16(2).U16(2).U16(6))}),
            "Other, , 1/1, CCIR-601")
      << "unspecified primaries";
  EXPECT_EQ(Picture("mp4v", {}, TrackHeader(1920, 1080), 1440), "8Int, , 4/3, ")
      << "from the display size";
  EXPECT_EQ(Picture("dvc ", {}, TrackHeader(720, 576), 720, 576), "8Int, , , ")
      << "writers of standard definition omit the aspect";
  const Bytes wrapped =
      Box("sinf", {Box("frma", Bytes("apch")), Box("schm", Bytes().U32(0).Text("cenc").U32(1))});
  const auto encrypted = ReadMovie(
      {MovieHeader(600, 0), Track("vide", MediaHeader(25, 25),
                                  {Descriptions(VideoEntry("encv", 640, 360, {wrapped}))})});
  EXPECT_EQ(encrypted.Get(kNsDM, "videoCompressor"), "ProRes 422 HQ");
}

TEST(IsoMovies, ProResFramesHaveTheFieldOrder) {
  Bytes frame = Bytes().U32(1000).Text("icpf").U16(148).U16(0).Text("comp").U16(1920).U16(1080);
  frame.Hex("84 00 01 01 01").Fill(20);
  Bytes file = FileType().Add(Box("mdat", frame));
  const Bytes track = Track("vide", MediaHeader(25, 25),
                            {Descriptions(VideoEntry("apch", 1920, 1080)), Durations({{25, 1}}),
                             Sizes(25), Chunks(static_cast<std::uint32_t>(FileType().size() + 8))});
  const auto result =
      ReadWith(kIsoMediaReader, file.Add(Box("moov", {MovieHeader(600, 0), track})).str());
  EXPECT_EQ(result.Get(kNsDM, "videoFieldOrder"), "Upper");
  EXPECT_EQ(result.Get(kNsDM, "videoColorSpace"), "CCIR-709");
}

TEST(IsoMovies, AMRHasOneChannel) {
  const auto result =
      ReadMovie({MovieHeader(600, 600), Track("soun", MediaHeader(8000, 8000),
                                              {Descriptions(SoundEntry("samr", 2, 16, 8000))})});
  EXPECT_EQ(result.Get(kNsDM, "audioChannelType"), "Mono");
}

// The facts of the camera in a movie with this box.
std::string CameraFacts(const Bytes& box) {
  const std::string all = Facts(ReadMovie({MovieHeader(600, 0), box}));
  return all.substr(all.find("ModifyDate"));
}

TEST(IsoMovies, BoxesOfMakersDescribeTheCamera) {
  TiffBytes t;
  const std::string first =
      t.File({t.Ascii(271, "Canon"), t.Ascii(272, "EOS C50"), t.Ascii(315, "A. One")});
  const std::string exif = t.File({t.Ascii(36867, "2023:04:05 06:07:08"), t.Ascii(42033, "01234")});
  const Bytes canon = Box("uuid", Bytes()
                                      .Hex("85C0B687 820F11E0 8111F4CE 462B6A48")
                                      .Add(Box("CMT1", Bytes(first)))
                                      .Add(Box("CMT2", Bytes(exif))));
  const auto result = ReadMovie({MovieHeader(600, 0), canon});
  EXPECT_EQ(result.Get(kNsTIFF, "Model"), "EOS C50");
  EXPECT_EQ(result.Get(kNsAux, "SerialNumber"), "01234");
  EXPECT_EQ(result.Get(kNsXMP, "CreateDate"), "2023-04-05T06:07:08");

  Bytes thumbnail = Bytes().Fill(64).Hex("FFD8FFE1").U16(first.size() + 8);
  thumbnail.Text(std::string_view("Exif\0\0", 6)).Text(first);
  const std::string dated = "ModifyDate=2021-03-04T05:06:08Z\n";
  EXPECT_EQ(CameraFacts(Box("udta", {Box("PANA", thumbnail)})),
            dated + "Make=Canon\nModel=EOS C50\n");

  Bytes tags = Bytes().U32(1).U16(2).U16(5).Text("NIKON").U32(0x13).U16(4).U16(1).U32(9);
  tags.U32(0x110A431).U16(2).U16(3).Text("777").U32(0x12).U16(2).U16(19).Text(
      "2022:01:02 03:04:05");
  const auto nikon =
      ReadMovie({MovieHeader(600, 0), Box("udta", {Box("NCDT", {Box("NCTG", tags)})})});
  EXPECT_EQ(nikon.Get(kNsTIFF, "Make"), "NIKON");
  EXPECT_EQ(nikon.Get(kNsAux, "SerialNumber"), "777");
  EXPECT_EQ(nikon.Get(kNsXMP, "CreateDate"), "2022-01-02T03:04:05");

  Bytes action = Bytes().Text("DEVC").U8(0).U8(1).U16(48);
  action.Text("DVNM").Text("c").U8(1).U16(6).Text("Camera").U16(0);
  action.Text("CASN").Text("c").U8(5).U16(1).Text("C3461").Fill(3);
  action.Text("MINF").Text("c").U8(5).U16(1).Text("HERO8").Fill(3);
  EXPECT_EQ(CameraFacts(Box("udta", {Box("GPMF", action)})),
            dated + "cameraModel=HERO8\nMake=GoPro\nModel=HERO8\nSerialNumber=C3461\n");

  if (const auto sample = ReadSample("new/gopro/mp4header.raw")) {
    EXPECT_EQ(CameraFacts(Box("udta", {Box("GPMF", Bytes(*sample))})),
              dated +
                  "CreatorTool=HD7.01.01.90.00\ncameraModel=HERO7 Black\nMake=GoPro\n"
                  "Model=HERO7 Black\nsoftware=HD7.01.01.90.00\n"
                  "SerialNumber=C3281325934846\n");
  }

  Bytes place = Bytes().U32(0).U16(0).Text("Here").U8(0).U8(0);
  place.U32(0x00105FB1).U32(0xFFCFCAB3).U32(171 << 16);
  EXPECT_EQ(CameraFacts(Box("udta", {Box("loci", place)})),
            dated +
                "GPSAltitude=11206656/65536\nGPSAltitudeRef=0\nGPSLatitude=48,12.49237S\n"
                "GPSLongitude=16,22.42767E\n");
  ReadDamaged(kIsoMediaReader,
              FileType()
                  .Add(Box("moov", {canon, Box("udta", {Box("GPMF", action), Box("loci", place),
                                                        Box("NCDT", {Box("NCTG", tags)})})}))
                  .str());
}

TEST(IsoMovies, NonRealTimeMetadataDescribesTheCamera) {
  const std::string xml =
      "<NonRealTimeMeta lastUpdate='2022-05-06T07:08:09+09:00'><CreationDate "
      "value='2022-05-06T07:08:00+09:00'/><VideoFormat><VideoFrame "
      "videoCodec='AVC_1920_1080_HP@L41' "
      "formatFps='25p'/></VideoFormat><Device manufacturer='Sony' modelName='ILCE-7' "
      "serialNo='123'/></NonRealTimeMeta>";
  const Bytes meta = Box(
      "meta", Bytes().U32(0).Add(Handler("nrtm")).Add(Box("xml ", Bytes().U32(0).Text(xml).U8(0))));
  const Bytes video = Track("vide", MediaHeader(50, 50),
                            {Descriptions(VideoEntry("avc1", 1920, 1080)), Durations({{50, 1}})});
  const std::string expected =
      "CreateDate=2022-05-06T07:08:00+09:00\nModifyDate=2022-05-06T07:08:09+09:00\n"
      "videoFrameRate=50\nvideoCompressor=AVC\nvideoFieldOrder=Progressive\n"
      "cameraModel=ILCE-7\nMake=Sony\nModel=ILCE-7\nSerialNumber=123\n"
      "videoFrameSize=1920x1080 pixel\nduration=50 @ 1/50\n";
  EXPECT_EQ(Facts(ReadMovie({MovieHeader(600, 0), video, meta})), expected);
  const Bytes atTop = FileType().Add(Box("moov", {MovieHeader(600, 0), video})).Add(meta);
  EXPECT_EQ(Facts(ReadWith(kIsoMediaReader, atTop.str())), expected);
  const TempTree tree;
  tree.File("C0001M01.XML",
            "<NonRealTimeMeta><CreationDate value='2001-02-03T04:05:06Z'/></NonRealTimeMeta>");
  EXPECT_EQ(Facts(ReadWith(kIsoMediaReader, atTop.str(), tree.Path("C0001.MP4"))), expected)
      << "the document in the file replaces the record";
}

}  // namespace
