// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <bit>
#include <string>
#include <utility>

#include "formats/TransportStream.h"
#include "foundation/ByteReader.h"
#include "foundation/CallScope.h"
#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "support/TempTree.h"
#include "xmp/readers/AudioStream.h"
#include "xmp/readers/ClipInfo.h"
#include "xmp/readers/TransportStreamReader.h"
#include "xmp/readers/VideoStream.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::Facts;
using sorvik_test::ReadSample;
using sorvik_test::ReadWith;

// A camera's sequence parameter set: 1920x1080, 25 frames, interlaced.
constexpr char kSPS[] =
    "27640028AD002DB01E0111F7808800000300080000030197260000A4CB800107AD078C19300005265C00083D683C60"
    "5000";
constexpr char kUUID[] = "17EE8C60F84D11D98CD60800200C9A66";

Bytes Hex(std::string_view digits) {
  Bytes b;
  return b.Hex(digits);
}

// Writes the packets of one file. Continuity counters stay 0, as the reader ignores them.
class StreamMaker {
 public:
  explicit StreamMaker(bool prefixed = true) : prefixed_(prefixed) {}

  // One or more packets that carry `payload` of a PID.
  void Add(unsigned pid, const Bytes& payload) {
    std::size_t at = 0;
    do {
      const std::size_t part = std::min<std::size_t>(payload.size() - at, 184);
      if (prefixed_) bytes_.U32(0x47474747);  // arrival time that consists of sync bytes
      bytes_.U8(0x47).U16((at == 0 ? 0x4000 : 0) | pid);
      if (part == 184) {
        bytes_.U8(0x10);
      } else {
        const std::size_t stuffing = 183 - part;  // adaptation field up to the payload
        bytes_.U8(0x30).U8(stuffing);
        if (stuffing > 0) bytes_.U8(0).Fill(stuffing - 1, 0xFF);
      }
      bytes_.Text(std::string_view(payload.str()).substr(at, part));
      at += part;
    } while (at < payload.size());
  }
  void AddProgram(std::uint32_t registration, const Bytes& streams, std::uint32_t checksum = 0) {
    Bytes association;
    association.U8(0);                                                        // pointer
    association.U8(0).U16(0xB000 | 17).U16(1).U8(0xC1).U8(0).U8(0);           // table 0
    association.U16(0).U16(0xE000 | 0x1F).U16(1).U16(0xE000 | 0x100).U32(0);  // SIT, PMT, CRC
    Add(0, association);
    Bytes map;
    map.U16(1).U8(0xC1).U8(0).U8(0).U16(0xE000 | 0x1001);
    if (registration == 0) {
      map.U16(0xF000);
    } else {
      map.U16(0xF000 | 6).U8(5).U8(4).U32(registration);
    }
    map.Add(streams).U32(checksum);
    Add(0x100, Bytes().U8(0).U8(2).U16(0xB000 | map.size()).Add(map));
  }
  const std::string& str() const { return bytes_.str(); }
  std::size_t size() const { return bytes_.size(); }

 private:
  bool prefixed_;
  Bytes bytes_;
};

Bytes Pes(unsigned id, std::uint64_t time, const Bytes& data) {
  Bytes b;
  b.U24(1).U8(id).U16(0).U8(0x80).U8(0x80).U8(5);  // start, id, length, flags, size of the rest
  b.U8(0x21 | (time >> 29 & 0x0E)).U16((time >> 14 & 0xFFFE) | 1).U16((time << 1 & 0xFFFE) | 1);
  return b.Add(data);
}

Bytes AvchdStreams() {
  Bytes b;
  b.U8(0x1B).U16(0xF011).U16(0xF00A).Hex("0508 48444D56 FF1B433F");  // H.264, 1080i, 25
  b.U8(0x81).U16(0xF100).U16(0xF000);                                // AC-3
  return b;
}

// Inserts emulation prevention bytes.
Bytes Escaped(const Bytes& payload) {
  Bytes b;
  int zeros = 0;
  for (const char c : payload.str()) {
    if (zeros == 2 && static_cast<unsigned char>(c) <= 3) {
      b.U8(3);
      zeros = 0;
    }
    zeros = c == 0 ? zeros + 1 : 0;
    b.U8(static_cast<unsigned char>(c));
  }
  return b;
}

// An access unit with the parameter set, picture timing and, if there are `tags`, a recording
// block.
Bytes Picture(const std::vector<std::string>& tags, unsigned structure = 1) {
  Bytes b;
  b.Hex("00000001 0910").Hex("00000001").Hex(kSPS);
  Bytes block;
  block.Text("MDPM").U8(tags.size());
  for (const std::string& tag : tags) block.Hex(tag);
  Bytes message;
  // Picture timing: two delays of 10 bits, picture structure 4.
  message.Hex("0104 0000").U8(0x60 | structure).U8(0x40);
  if (!tags.empty()) message.U8(5).U8(16 + block.size()).Hex(kUUID).Add(block);
  b.Hex("00000001 06").Add(Escaped(message)).U8(0x80);
  b.Hex("00000001 65").Fill(300, 0x55);
  return b;
}

const std::vector<std::string> kTags = {
    "13 12313420",                                               // 20:34:31:12
    "18 0B202101", "19 17173317",                                // with +05:30
    "B1 4E000000", "B2 00300001", "B3 001E0002", "B4 00120001",  // N 48, 30/2, 18
    "B5 57000000", "B6 00020001", "B7 00000001", "B8 00000001",  // W 2, 0, 0
    "B9 01000000", "BA 00640002", "BE 41000000",                 // 50 m below, valid
    "E0 01083000", "E4 4E45582D", "E5 4653000A"};                // Sony NEX-FS

std::string MakeAvchd(const std::vector<std::string>& tags, std::size_t padding = 0) {
  StreamMaker stream;
  stream.AddProgram(0x48444D56, AvchdStreams());
  const auto picture = [&](std::uint64_t time) { return Pes(0xE0, time, Picture(tags)); };
  Bytes ac3;
  ac3.Hex("0B77 0000 1E 40 E1 00").Fill(50);  // 48 kHz, version 8, 3/2 and LFE
  stream.Add(0x1011, picture(214772));
  stream.Add(0x1100, Pes(0xBD, 207572, ac3));
  if (padding != 0) stream.Add(0x1FFF, Bytes().Fill(padding));
  stream.Add(0x1011, picture(207572));  // displayed before the first one
  if (padding != 0) stream.Add(0x1FFF, Bytes().Fill(padding));
  stream.Add(0x1011, picture(207572 + 3600 * 35));
  return stream.str();
}

TEST(TransportStreamReader, ReadsAnAvchdStream) {
  const auto result = ReadWith(kTransportStreamReader, MakeAvchd(kTags));
  EXPECT_TRUE(result.recognised);
  EXPECT_EQ(result.reads, 0);
  EXPECT_EQ(Facts(result),
            "CreateDate=2021-01-17T17:33:17+05:30\n"
            "videoFrameRate=25\n"
            "videoPixelDepth=8Int\n"
            "videoPixelAspectRatio=1/1\n"
            "videoCompressor=AVC\n"
            "videoFieldOrder=Upper\n"
            "audioSampleRate=48000\n"
            "audioSampleType=Compressed\n"
            "audioChannelType=5.1\n"
            "audioCompressor=AC3\n"
            "shotDate=2021-01-17T17:33:17+05:30\n"
            "Make=Sony\n"
            "Model=NEX-FS\n"
            "GPSAltitude=100/2\n"
            "GPSAltitudeRef=1\n"
            "GPSLatitude=48,15.30000N\n"
            "GPSLongitude=2,0.00000W\n"
            "videoFrameSize=1920x1080 pixel\n"
            "startTimecode=20:34:31:12 25Timecode\n"
            "duration=36 @ 1/25\n");
}

TEST(TransportStreamReader, ReadsSectionsUpToTheirChecksum) {
  StreamMaker stream;
  // The start of a table whose end is missing is dropped when the next one starts.
  stream.Add(0, Bytes().U8(0).U8(0).U16(0xB000 | 1000).U16(1));
  // A checksum that looks like a video stream.
  Bytes audio;
  audio.U8(0x81).U16(0xF100).U16(0xF006).Hex("8104 04300400");
  stream.AddProgram(0x48444D56, audio, 0x1BF01100);
  stream.Add(0x1FFF, Bytes().Fill(1000));
  const auto result = ReadWith(kTransportStreamReader, stream.str());
  EXPECT_EQ(result.Get(kNsDM, "audioCompressor"), "AC3");
  EXPECT_EQ(result.Get(kNsDM, "videoCompressor"), "");
}

// A sequence parameter set of the baseline profile. Sizes are in blocks of 16 pixels.
Bytes BaselineSPS(unsigned columns, unsigned rows, unsigned cropBottom) {
  std::string bits;
  const auto add = [&bits](unsigned value) {  // Exp-Golomb code
    const auto length = static_cast<int>(std::bit_width(value + 1));
    bits.append(static_cast<std::size_t>(length - 1), '0');
    for (int i = length - 1; i >= 0; --i) bits += (value + 1) >> i & 1 ? '1' : '0';
  };
  for (const unsigned value : {0u, 0u, 2u, 1u}) add(value);  // id, frame numbers, order, references
  bits += "0";                                               // no gaps
  add(columns - 1);
  add(rows - 1);
  bits += "111";  // frames only, inference, cropping
  for (const unsigned value : {0u, 0u, 0u, cropBottom}) add(value);
  bits += "01";  // no VUI, stop bit
  bits.resize((bits.size() + 7) / 8 * 8, '0');
  Bytes b;
  b.U8(66).U8(0).U8(40);  // profile, constraints, level
  for (std::size_t i = 0; i < bits.size(); i += 8) {
    b.U8(static_cast<unsigned>(std::stoul(bits.substr(i, 8), nullptr, 2)));
  }
  return Bytes().Hex("00000001 67").Add(Escaped(b));
}

TEST(AVCVideo, ReadsTheSizeOfTheBaselineProfile) {
  const auto read = [](unsigned columns, unsigned rows, unsigned cropBottom) {
    const std::string stream = BaselineSPS(columns, rows, cropBottom).Hex("00000001 65").str();
    const auto facts = ReadAVC(Sorvik::foundation::ReaderOf(stream));
    return std::pair(facts.width, facts.height);
  };
  EXPECT_EQ(read(120, 68, 4), std::pair(1920u, 1080u));
  EXPECT_EQ(read(4096, 4096, 0), std::pair(65536u, 65536u));
  EXPECT_EQ(read(4097, 68, 4), std::pair(0u, 0u));
  EXPECT_EQ(read(120, 4097, 4), std::pair(0u, 0u));
}

// ITU-T H.264, table D-1.
TEST(AVCVideo, ReadsTheFieldOrderOfPictureTiming) {
  const std::pair<unsigned, const char*> kStructures[] = {{1, "Upper"}, {2, "Lower"}, {3, "Upper"},
                                                          {4, "Lower"}, {5, "Upper"}, {6, "Lower"},
                                                          {0, "Upper"},  // a frame: the default
                                                          {7, "Upper"}};
  for (const auto& [structure, order] : kStructures) {
    const std::string stream = Picture({}, structure).str();
    EXPECT_STREQ(ReadAVC(Sorvik::foundation::ReaderOf(stream)).fieldOrder, order) << structure;
  }
}

TEST(TransportStreamReader, ReadsOnlyForWantedProperties) {
  const std::string file = MakeAvchd(kTags, 500'000);
  const auto all = ReadWith(kTransportStreamReader, file);
  EXPECT_EQ(all.reads, 2) << "further pictures for the earliest time stamp, and the tail";
  EXPECT_LE(all.longestRead, 1u << 20);
  EXPECT_EQ(all.Field("duration", kNsDM, "value"), "36");
  WantedProperties wanted = WantedProperties::None();
  wanted.Add(kNsDM, "startTimecode");
  wanted.Add(kNsDM, "audioSampleRate");
  EXPECT_EQ(ReadWith(kTransportStreamReader, file, {}, wanted).reads, 0);
}

TEST(TransportStreamReader, ReadsALongerHeadForTheRecordingBlock) {
  StreamMaker stream;
  stream.AddProgram(0x48444D56, AvchdStreams());
  stream.Add(0x1011, Pes(0xE0, 1000, Picture({})));
  stream.Add(0x1011, Pes(0xE0, 4600, Bytes().Hex("00000001 65").Fill(300'000, 0x55)));
  stream.Add(0x1011, Pes(0xE0, 8200, Picture(kTags)));
  WantedProperties wanted = WantedProperties::None();
  wanted.Add(kNsDM, "shotDate");
  const auto result = ReadWith(kTransportStreamReader, stream.str(), {}, wanted);
  EXPECT_EQ(result.reads, 1);
  EXPECT_EQ(result.Get(kNsTIFF, "Make"), "Sony");
}

// All facts of this camera are late in the file; each is found independently.
TEST(TransportStreamReader, FindsEachFactIndependently) {
  std::vector<std::string> tags = kTags;
  tags.insert(tags.begin() + 3, "A8 00000000");  // white balance automatic
  StreamMaker stream;
  stream.AddProgram(0x48444D56, AvchdStreams());
  stream.Add(0x1FFF, Bytes().Fill(300'000));
  stream.Add(0x1011, Pes(0xE0, 8200, Picture(tags)));
  const std::string file = stream.str();
  const auto all = ReadWith(kTransportStreamReader, file);
  for (const auto& [schema, name] :
       {std::pair(kNsDM, "videoPixelDepth"), std::pair(kNsEXIF, "GPSAltitudeRef"),
        std::pair(kNsCRS, "WhiteBalance"), std::pair(kNsTIFF, "Model")}) {
    WantedProperties wanted = WantedProperties::None();
    wanted.Add(schema, name);
    EXPECT_NE(all.Get(schema, name), "") << name;
    EXPECT_EQ(ReadWith(kTransportStreamReader, file, {}, wanted).Get(schema, name),
              all.Get(schema, name))
        << name;
  }
}

TEST(TransportStreamReader, ReadsAudioFromTheProgramDescriptors) {
  StreamMaker stream;
  Bytes streams;
  streams.U8(0x1B).U16(0xF011).U16(0xF00A).Hex("0508 48444D56 FF1B433F");
  streams.U8(0x81).U16(0xF100).U16(0xF006).Hex("8104 04300400");  // 48 kHz, 256 kb/s, 2/0
  stream.AddProgram(0x48444D56, streams);
  stream.Add(0x1011, Pes(0xE0, 1000, Picture(kTags)));
  stream.Add(0x1011, Pes(0xE0, 4600, Bytes().Hex("00000001 65").Fill(300'000, 0x55)));
  WantedProperties wanted = WantedProperties::None();
  wanted.Add(kNsDM, "audioSampleRate");
  const auto result = ReadWith(kTransportStreamReader, stream.str(), {}, wanted);
  EXPECT_EQ(result.reads, 0);
  EXPECT_EQ(result.Get(kNsDM, "audioSampleRate"), "48000");
  EXPECT_EQ(result.Get(kNsDM, "audioChannelType"), "Stereo");
}

TEST(HEVCVideo, ReadsTheSequenceParameterSet) {
  const auto read = [](const char* nal) {
    const std::string stream = Bytes().Hex("00000001 46 01 50 00000001").Hex(nal).str();
    const VideoFacts f = ReadHEVC(Sorvik::foundation::ReaderOf(stream));
    return std::to_string(f.width) + "x" + std::to_string(f.height) + " " +
           std::to_string(f.depth) + " bits, " + std::to_string(f.rate.num) + "/" +
           std::to_string(f.rate.den) + ", " + std::to_string(f.aspectWidth) + ":" +
           std::to_string(f.aspectHeight) + ", " + std::to_string(f.primaries) + " " +
           std::to_string(f.matrix) + (f.fieldOrder == nullptr ? "" : f.fieldOrder);
  };
  EXPECT_EQ(read("420101016000000300900000030000030078A003C0801107CB965654A4C2F0168080"
                 "0001F480003A980400"),
            "1920x1080 8 bits, 30000/1001, 1:1, 0 0Progressive");
  EXPECT_EQ(read("42010102200000030090000003000003005AA005A200904D965654A4C2FFF0040002D6A1"
                 "220120800001F480003A980400"),
            "720x576 10 bits, 30000/1001, 64:45, 9 9Progressive");
  EXPECT_EQ(read("4201010160"), "0x0 8 bits, 0/0, 0:0, 0 0");
}

TEST(AudioStream, ReadsTheHeaderOfAAC) {
  ts::Stream stream;
  stream.type = 0x0F;
  const auto read = [&](const char* bytes) {
    const std::string raw = Bytes().Hex(bytes).str();
    const auto view = Sorvik::foundation::ReaderOf(raw).Bytes();
    const AudioFacts facts =
        ReadAudio(stream, ts::Elementary{{view.begin(), view.end()}, {}, {}, {}});
    return std::pair(facts.rate, facts.channels);
  };
  EXPECT_EQ(read("00 FFF1 4C80 2E7F"), std::pair(48000u, 2u));
  EXPECT_EQ(read("FFF9 5C40 2E7F"), std::pair(44100u >> 1, 1u)) << "MPEG-2";
  EXPECT_EQ(read("FFFD E404 0000"), std::pair(0u, 0u)) << "layer II";
}

TEST(TransportStreamReader, WritesUTCWithoutASign) {
  auto tags = kTags;
  for (auto& tag : tags) {
    if (tag.starts_with("18")) tag = "18 20202101";
  }
  EXPECT_EQ(ReadWith(kTransportStreamReader, MakeAvchd(tags)).Get(kNsDM, "shotDate"),
            "2021-01-17T17:33:17+00:00");
}

TEST(TransportStreamReader, DropsPositionsWithoutAFix) {
  auto tags = kTags;
  for (auto& tag : tags) {
    if (tag.starts_with("BE")) tag = "BE 56000000";
    if (tag.starts_with("18")) tag = "18 FF202101";
    if (tag.starts_with("E0")) tag = "E0 01030000";
  }
  const auto result = ReadWith(kTransportStreamReader, MakeAvchd(tags));
  EXPECT_EQ(result.Get(kNsEXIF, "GPSLatitude"), "");
  EXPECT_EQ(result.Get(kNsDM, "shotDate"), "2021-01-17T17:33:17") << "zone not set";
  EXPECT_EQ(result.Get(kNsTIFF, "Model"), "") << "the tag has another meaning for other makers";
}

// HDV: bare packets, MPEG-2 video, layer II audio, auxiliary records.
std::string MakeHdv(const std::vector<std::string>& records) {
  StreamMaker stream(false);
  Bytes streams;
  streams.U8(0x02).U16(0xE810).U16(0xF000);
  streams.U8(0x03).U16(0xE814).U16(0xF000);
  streams.U8(0xA1).U16(0xE811).U16(0xF000);
  stream.AddProgram(0x54534856, streams);
  Bytes video;
  video.Hex("000001B3 5A0438 34 FFFFE018");                    // 1440x1080, 16:9, 29.97
  video.Hex("000001B5 1442 0001 0000");                        // main profile, interlaced
  video.Hex("000001B8 84286240");                              // 01:02:03;04
  video.Hex("00000100 000FFFF8").Hex("000001B5 8FFFF3C0 00");  // picture, top field first
  stream.Add(0x810, Pes(0xE0, 90000, video));
  stream.Add(0x814, Pes(0xC0, 90000, Hex("FFFD E404").Fill(100)));
  for (const std::string& record : records) {
    Bytes body;
    body.Fill(31).Hex(record).PadTo(60);
    stream.Add(0x811, Bytes().U24(1).U8(0xBF).U16(body.size()).Add(body));
  }
  return stream.str();
}

TEST(TransportStreamReader, ReadsAnHdvStream) {
  // Timecode ffssmmhh, zone, day, month, year, FF, second, minute, hour.
  const std::string first = "60 07 06 C5 FF 30 01 14 FF 29 15 10";
  const std::string second = "61 07 06 C5 FF 31 01 14 FF 30 15 10";
  const auto result = ReadWith(kTransportStreamReader, MakeHdv({first, second}));
  EXPECT_EQ(Facts(result),
            "CreateDate=2014-01-31T10:15:30\n"
            "videoFrameRate=29.97\n"
            "videoPixelDepth=8Int\n"
            "videoPixelAspectRatio=4/3\n"
            "videoCompressor=MPEG-2\n"
            "videoFieldOrder=Upper\n"
            "audioSampleRate=48000\n"
            "audioSampleType=Compressed\n"
            "audioChannelType=Stereo\n"
            "audioCompressor=MPEG\n"
            "shotDate=2014-01-31T10:15:30\n"
            "videoFrameSize=1440x1080 pixel\n"
            "startTimecode=05;06;07;20 2997DropTimecode\n"
            "duration=1 @ 1001/30000\n");
  const auto named = ReadWith(kTransportStreamReader, MakeHdv({"FF FF FF FF FF FF FF FF FF FF FF"}),
                              "/c/VIDEO/HVR/00_0001_2009-03-14_101530.M2T");
  EXPECT_EQ(named.Get(kNsDM, "shotDate"), "2009-03-14T10:15:30");
  EXPECT_EQ(named.Field("startTimecode", kNsDM, "timeValue"), "01;02;03;04")
      << "of the group of pictures";
  const auto yearless =
      ReadWith(kTransportStreamReader, MakeHdv({"60 07 06 C5 FF 30 01 FF FF 29 15 10"}));
  EXPECT_EQ(yearless.Get(kNsDM, "shotDate"), "");
  EXPECT_EQ(yearless.Field("startTimecode", kNsDM, "timeValue"), "05;06;07;20");
}

Bytes MakeClipInfo(std::uint32_t start, std::uint32_t end) {
  Bytes b;
  b.Text("HDMV0100").U32(40).U32(0).PadTo(40);
  b.U32(26).U8(0).U8(1).U32(0).U8(1).U8(0);         // length, ATC sequences; start, STC, id
  return b.U16(0x1001).U32(0).U32(start).U32(end);  // PCR, start, presentation
}

TEST(ClipInfo, SumsSequencesAndRejectsInvalidFiles) {
  const Bytes info = MakeClipInfo(27'000'000, 28'355'103);
  EXPECT_EQ(ReadClipLength(info.Reader()), 1'355'103u);
  EXPECT_FALSE(ReadClipLength(MakeClipInfo(5, 5).Reader()));
  EXPECT_FALSE(ReadClipLength(MakeClipInfo(6, 5).Reader()));
  for (std::size_t size = 0; size < info.size(); ++size) {
    const Bytes cut = info.Cut(size);
    EXPECT_FALSE(ReadClipLength(cut.Reader())) << size;
  }
  Bytes invalid = info;
  invalid.Set(8, 0xFFFFFFFF, 4);
  EXPECT_FALSE(ReadClipLength(invalid.Reader()));
  const auto disc = ReadSample("avchd/agentjp-bdinfo-rs/BigBuckBunny/BDMV/CLIPINF/00000.clpi");
  if (!disc) GTEST_SKIP() << "samples not found";
  EXPECT_EQ(ReadClipLength(Sorvik::foundation::ReaderOf(*disc)), 1'355'103u);
}

TEST(TransportStreamReader, FillsMissingFactsFromTheCard) {
  const auto playlist = ReadSample("avchd/ElishaAz-AVCHD-Converter/files/00002.MPL");
  if (!playlist) GTEST_SKIP() << "samples not found";
  sorvik_test::TempTree tree;
  const Sorvik::foundation::CallScope scope;
  tree.File("BDMV/PLAYLIST/00002.MPL", *playlist);
  const auto read = [&tree](const char* clip) {
    return ReadWith(kTransportStreamReader, MakeAvchd({}),
                    tree.Path(std::string("BDMV/STREAM/").append(clip)));
  };
  const auto head = read("00014.MTS");
  EXPECT_EQ(head.Get(kNsDM, "shotDate"), "2022-06-15T09:39:26+03:00");
  EXPECT_EQ(head.Get(kNsTIFF, "Make"), "Sony");
  EXPECT_EQ(head.Field("startTimecode", kNsDM, "timeValue"), "17:43:33:00");
  EXPECT_EQ(head.Field("duration", kNsDM, "value"), "17718") << "708.708 s at 25";
  const auto later = read("00015.MTS");
  EXPECT_EQ(later.Get(kNsDM, "shotDate"), "") << "known for the first file only";
  EXPECT_EQ(later.Get(kNsTIFF, "Make"), "Sony");
  tree.File("BDMV/CLIPINF/00015.CPI", MakeClipInfo(45000, 90000).str());
  EXPECT_EQ(read("00015.MTS").Field("duration", kNsDM, "value"), "25");
  tree.File("BDMV/CLIPINF/00016.CLP", MakeClipInfo(45000, 90000).str());
  EXPECT_EQ(read("00016.MTS").Field("duration", kNsDM, "value"), "25");
  EXPECT_EQ(read("00099.MTS").Field("duration", kNsDM, "value"), "36") << "from the time stamps";
}

// `count` packets at a distance of `stride`, the first one at `start`, followed by other bytes.
std::string PacketRun(std::size_t count, std::size_t stride, std::size_t start, std::size_t rest) {
  Bytes b;
  b.Fill(start);
  for (std::size_t i = 0; i < count; ++i) b.U8(0x47).Fill(i + 1 < count ? stride - 1 : 187);
  return b.Fill(rest).str();
}

TEST(TransportStream, NeedsSeveralPacketsForALayout) {
  using Found = std::pair<std::uint64_t, std::uint64_t>;
  const auto find = [](std::size_t count, std::size_t stride, std::size_t start, std::size_t rest) {
    const std::string head = PacketRun(count, stride, start, rest);
    const auto layout = Sorvik::formats::ts::FindLayout(Sorvik::foundation::ReaderOf(head));
    return layout ? Found(layout->start, layout->stride) : Found();
  };
  for (const auto& [stride, start] : {Found{188, 0}, Found{192, 4}}) {
    EXPECT_EQ(find(4, stride, start, 1000), Found(start, stride));
    EXPECT_EQ(find(3, stride, start, 1000), Found());
    EXPECT_EQ(find(2, stride, start, 0), Found(start, stride)) << "the file has no more";
    EXPECT_EQ(find(1, stride, start, 0), Found());
    EXPECT_EQ(find(5, stride, 101, 1000), Found(101, stride)) << "starts inside a packet";
    EXPECT_EQ(find(4, stride, 101, 1000), Found());
  }
}

TEST(TransportStreamReader, SurvivesInvalidStreams) {
  const auto read = [](const std::string& bytes) {
    return ReadWith(kTransportStreamReader, bytes, "/card/BDMV/STREAM/00001.MTS");
  };
  EXPECT_FALSE(read("").recognised);
  EXPECT_FALSE(read(std::string(300'000, '\0')).recognised);
  EXPECT_FALSE(read("G" + std::string(250, 'x')).recognised) << "text that begins with G";
  std::string noise(300'000, '\0');
  std::uint32_t state = 1;
  for (char& c : noise) c = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  EXPECT_FALSE(read(noise).recognised);
  // Packets without payload, and a file that is still being written.
  StreamMaker empty;
  for (int i = 0; i < 20; ++i) empty.Add(0x1FFF, Bytes().Fill(184));
  EXPECT_FALSE(read(empty.str()).output.hasNative);
  const std::string growing = MakeAvchd(kTags) + std::string(2'000'000, '\0');
  EXPECT_EQ(read(growing).Field("duration", kNsDM, "value"), "")
      << "the last time stamp is missing";
  EXPECT_EQ(read(growing).Get(kNsDM, "videoFrameRate"), "25");
  // Starts in the middle of a packet.
  EXPECT_EQ(read(MakeAvchd(kTags).substr(101)).recognised, true);
}

TEST(TransportStreamReader, SurvivesTruncationAndCorruption) {
  for (const std::string& full : {MakeAvchd(kTags), MakeHdv({"60 07 06 C5 FF 30 01 14 FF 29"})}) {
    for (std::size_t size = 0; size < full.size(); size += 7) {
      EXPECT_EQ(ReadWith(kTransportStreamReader, full.substr(0, size)).reads, 0);
    }
    for (std::size_t at = 0; at < full.size(); ++at) {
      for (const char value : {'\xFF', '\0', '\x47'}) {
        std::string bad = full;
        bad[at] = value;
        EXPECT_LE(ReadWith(kTransportStreamReader, bad).reads, 2);
      }
    }
  }
}

// Facts as printed by independent readers.
TEST(TransportStreamReader, ReadsTheSamples) {
  const auto canon = ReadSample("avchd/M2TS.mts");
  const auto hdv = ReadSample("hdv/SYNTHETIC/hdv1080i60-aux-synthetic.m2t");
  const auto plain = ReadSample("hdv/SYNTHETIC/hdv1080i60-synthetic.m2t");
  if (!canon || !hdv || !plain) GTEST_SKIP() << "samples not found";
  const auto first = ReadWith(kTransportStreamReader, *canon);
  EXPECT_EQ(first.Get(kNsDM, "shotDate"), "2008-12-31T23:16:24+01:00");
  EXPECT_EQ(first.Get(kNsTIFF, "Make"), "Canon");
  EXPECT_EQ(first.Get(kNsDM, "audioChannelType"), "Stereo");
  EXPECT_EQ(first.Field("videoFrameSize", kNsDimensions, "h"), "1080");
  EXPECT_EQ(first.Field("startTimecode", kNsDM, "timeValue"), "") << "not written by this camera";
  const auto second = ReadWith(kTransportStreamReader, *hdv);
  EXPECT_EQ(second.Get(kNsDM, "shotDate"), "2014-01-31T10:15:30");
  EXPECT_EQ(second.Field("startTimecode", kNsDM, "timeValue"), "01;02;03;04");
  EXPECT_EQ(second.Field("duration", kNsDM, "value"), "15") << "501 ms of video";
  const auto third = ReadWith(kTransportStreamReader, *plain);
  EXPECT_EQ(third.Get(kNsDM, "videoPixelAspectRatio"), "4/3");
  EXPECT_EQ(third.Get(kNsDM, "audioSampleRate"), "48000");
}

}  // namespace
