// SPDX-License-Identifier: MIT
// Matroska and WebM: tracks, tags, duration, and parts after the media data.
#include <gtest/gtest.h>

#include <bit>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "xmp/readers/MatroskaReader.h"

namespace sorvik_test {
namespace {

using namespace Sorvik::xmp;

Bytes Id(std::uint32_t id) {
  Bytes b;
  for (int shift = 24; shift >= 0; shift -= 8) {
    if (id >> shift != 0) b.U8(id >> shift & 0xFF);
  }
  return b;
}
Bytes Element(std::uint32_t id, const Bytes& body) {
  return Id(id).U8(0x08).U32(body.size()).Add(body);
}
Bytes Number(std::uint32_t id, std::uint64_t value) { return Element(id, Bytes().U64(value)); }
Bytes Float(std::uint32_t id, double value) {
  return Number(id, std::bit_cast<std::uint64_t>(value));
}
Bytes Text(std::uint32_t id, const std::string& text) { return Element(id, Bytes().Text(text)); }

Bytes Header() { return Element(0x1A45DFA3, Text(0x4282, "matroska")); }
Bytes Info(double milliseconds) {
  return Element(0x1549A966, Number(0x2AD7B1, 1'000'000)
                                 .Add(Float(0x4489, milliseconds))
                                 .Add(Number(0x4461, 636'527'167ull * 1'000'000'000))
                                 .Add(Text(0x7BA9, "Sunrise"))
                                 .Add(Text(0x4D80, "library"))
                                 .Add(Text(0x5741, "recorder 2")));
}
Bytes VideoTrack(const Bytes& more = {}, std::uint64_t nanoseconds = 40'000'000) {
  Bytes video = Number(0xB0, 1440).Add(Number(0xBA, 1088)).Add(Number(0x54AA, 8));
  video.Add(Number(0x54B0, 1920)).Add(Number(0x54BA, 1080)).Add(more);
  return Element(0xAE, Number(0x73C5, 7)
                           .Add(Number(0x83, 1))
                           .Add(Text(0x86, "V_MPEG2"))
                           .Add(Number(0x23E383, nanoseconds))
                           .Add(Element(0xE0, video)));
}
Bytes SoundTrack(const std::string& codec) {
  return Element(
      0xAE,
      Number(0x83, 2)
          .Add(Text(0x86, codec))
          .Add(Element(0xE1, Float(0xB5, 48000).Add(Number(0x9F, 2)).Add(Number(0x6264, 24)))));
}
Bytes Tag(std::uint64_t track, const std::string& name, const std::string& text) {
  return Element(0x7373, Element(0x63C0, track == 0 ? Bytes() : Number(0x63C5, track))
                             .Add(Element(0x67C8, Text(0x45A3, name).Add(Text(0x4487, text)))));
}
Bytes Segment(const Bytes& body) { return Header().Add(Element(0x18538067, body)); }

ReadResult Read(const Bytes& file) { return ReadWith(kMatroskaReader, file.str()); }

TEST(MatroskaReader, ReadsTracksAndInfo) {
  const Bytes tracks = Element(
      0x1654AE6B, VideoTrack(Number(0x9A, 1)
                                 .Add(Number(0x9D, 6))
                                 .Add(Element(0x55B0, Number(0x55B1, 9).Add(Number(0x55BB, 9)))))
                      .Add(SoundTrack("A_PCM/INT/LIT")));
  const ReadResult result = Read(Segment(Info(10'000).Add(tracks)));
  EXPECT_TRUE(result.recognised && result.output.hasNative);
  EXPECT_EQ(Facts(result),
            "CreateDate=2021-03-04T05:06:07Z\nCreatorTool=recorder 2\nvideoFrameRate=25\n"
            "videoPixelDepth=8Int\nvideoPixelAspectRatio=4/3\nvideoColorSpace=BT.2020\n"
            "videoCompressor=MPEG-2\nvideoFieldOrder=Lower\naudioSampleRate=48000\n"
            "audioSampleType=24Int\naudioChannelType=Stereo\naudioCompressor=PCM\n"
            "software=recorder 2\nvideoFrameSize=1440x1080 pixel\nduration=250 @ 1/25\n");
  EXPECT_EQ(result.reads, 0);
}

TEST(MatroskaReader, FindsTagsAfterTheMediaData) {
  const Bytes tracks = Element(0x1654AE6B, VideoTrack());
  const Bytes cluster = Element(0x1F43B675, Bytes().Fill(200'000));
  const Bytes tags = Element(0x1254C367, Tag(7, "NUMBER_OF_FRAMES", "249")
                                             .Add(Tag(7, "TIMECODE", "01:02:03;04"))
                                             .Add(Tag(9, "TIMECODE", "09:09:09:09"))
                                             .Add(Tag(0, "artist", "A. One")));
  const auto head = [&](std::uint64_t at) {
    return Element(0x114D9B74,
                   Element(0x4DBB, Element(0x53AB, Id(0x1254C367)).Add(Number(0x53AC, at))));
  };
  const Bytes front = head(0).Add(Info(10'000)).Add(tracks).Add(cluster);
  Bytes body = head(front.size());
  body.Add(Info(10'000)).Add(tracks).Add(cluster).Add(tags);
  const ReadResult result = Read(Segment(body));
  EXPECT_EQ(result.Get(kNsDM, "artist"), "A. One");
  EXPECT_EQ(result.Field("startTimecode", kNsDM, "timeValue"), "01;02;03;04");
  EXPECT_EQ(result.Field("duration", kNsDM, "value"), "249");
  EXPECT_EQ(result.reads, 1);
}

Bytes Track(const std::string& codec, const Bytes& setup, const Bytes& video) {
  return Element(0xAE,
                 Number(0xD7, 1)
                     .Add(Number(0x83, 1))
                     .Add(Text(0x86, codec))
                     .Add(Element(0x63A2, setup))
                     .Add(Element(0xE0, Number(0xB0, 640).Add(Number(0xBA, 360)).Add(video))));
}

TEST(MatroskaReader, ReadsTheFirstFrame) {
  const auto read = [](const Bytes& track, const char* frame) {
    const Bytes other = Element(0xA3, Bytes().Hex("82 0000 80 FFFF"));
    const Bytes block = Element(0xA3, Bytes().Hex("81 0000 80").Hex(frame));
    return Read(Segment(Info(1000)
                            .Add(Element(0x1654AE6B, track))
                            .Add(Element(0x1F43B675, Bytes(other).Add(block)))));
  };
  const Bytes vp9 = Track("V_VP9", {}, {});
  const ReadResult shallow = read(vp9, "82 498342 40");
  EXPECT_EQ(shallow.Get(kNsDM, "videoPixelDepth"), "8Int");
  EXPECT_EQ(shallow.Get(kNsDM, "videoColorSpace"), "CCIR-709");
  EXPECT_EQ(read(vp9, "92 498342 A8").Get(kNsDM, "videoPixelDepth"), "Other");
  EXPECT_EQ(read(vp9, "86 498342 40").Get(kNsDM, "videoPixelDepth"), "") << "no key frame";
  const Bytes avc = Bytes().Hex(
      "014D401E FFE1001C 674D401E F405A126 FFC01000 0B440000 03000400 000300C8 7C50AA80"
      "01000468 DE0FC8");
  EXPECT_EQ(read(Track("V_MPEG4/ISO/AVC", avc, {}), "00000005 0601014280 00000004 6588822C")
                .Get(kNsDM, "videoFieldOrder"),
            "Lower");
}

TEST(MatroskaReader, CountsTracksWithOneChannelEach) {
  const auto channels = [](unsigned each) {
    const Bytes sound = Element(
        0xAE, Number(0x83, 2).Add(Text(0x86, "A_AAC")).Add(Element(0xE1, Number(0x9F, each))));
    return Read(Segment(Info(1).Add(Element(0x1654AE6B, Bytes(sound).Add(sound)))))
        .Get(kNsDM, "audioChannelType");
  };
  EXPECT_EQ(channels(1), "Stereo");
  EXPECT_EQ(channels(6), "5.1");
}

TEST(MatroskaReader, DurationWithoutARateIsInMilliseconds) {
  const ReadResult result = Read(Segment(Info(1234).Add(Element(0x1654AE6B, VideoTrack({}, 0)))));
  EXPECT_EQ(result.Field("duration", kNsDM, "value"), "1234");
  EXPECT_EQ(result.Field("duration", kNsDM, "scale"), "1/1000");
  EXPECT_FALSE(Read(Segment(Info(1234))).output.hasNative);
}

TEST(MatroskaReader, SurvivesDamage) {
  const Bytes tracks = Element(0x1654AE6B, VideoTrack().Add(SoundTrack("A_AAC")));
  ReadDamaged(kMatroskaReader, Segment(Info(1000).Add(tracks)).str());
}

}  // namespace
}  // namespace sorvik_test
