// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "xmp/readers/MXFLabels.h"
#include "xmp/readers/MXFReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::Facts;
using sorvik_test::ReadSample;
using sorvik_test::ReadWith;

constexpr char kPicture[] = "060E2B34 04010101 01030202 01000000";
constexpr char kSound[] = "060E2B34 04010101 01030202 02000000";
constexpr char kTime[] = "060E2B34 04010101 01030201 01000000";

Bytes Klv(std::string_view key, const Bytes& value) {
  Bytes b;
  return b.Hex(key).U8(0x83).U24(value.size()).Add(value);  // BER length in three bytes
}

Bytes Id(unsigned n) {
  Bytes b;
  return b.Fill(14, 0xA0).U16(n);
}
Bytes Ids(const std::vector<unsigned>& ns) {
  Bytes b;
  b.U32(ns.size()).U32(16);
  for (const unsigned n : ns) b.Add(Id(n));
  return b;
}
Bytes Utf16(std::string_view ascii) {
  Bytes b;
  for (const char c : ascii) b.U16(static_cast<unsigned char>(c));
  return b;
}
Bytes Hex(std::string_view digits) {
  Bytes b;
  return b.Hex(digits);
}
Bytes Num(std::uint64_t v, int size) {
  Bytes b;
  return size == 1 ? b.U8(v) : size == 2 ? b.U16(v) : size == 4 ? b.U32(v) : b.U64(v);
}
Bytes Fraction(unsigned a, unsigned b) { return Bytes(Num(a, 4)).Add(Num(b, 4)); }
Bytes Umid(unsigned n) {
  Bytes b;
  return b.Hex("060A2B34 01010105 01010F20 13000000").Fill(12, 0x11).U32(n);
}

// A local set: its kind, its instance id, then items of tag and data.
Bytes Set(unsigned kind, unsigned id, const std::vector<std::pair<unsigned, Bytes>>& items) {
  Bytes value;
  value.U16(0x3C0A).U16(16).Add(Id(id));
  for (const auto& [tag, data] : items) value.U16(tag).U16(data.size()).Add(data);
  Bytes key;
  key.Hex("060E2B34 02530101 0D010101 0101").U8(kind).U8(0);
  Bytes b(key.str());
  return b.U8(0x83).U24(value.size()).Add(value);
}

struct Maker {
  std::int64_t duration = 250;
  unsigned status = 4;        // 1 open incomplete .. 4 closed complete
  unsigned tapePosition = 0;  // start of the clip on tape if only the tape has a timecode
  bool timecodeOnTape = false;
  std::uint64_t footer = 0;
  bool incomplete = false;  // declares a header of 0 bytes
  const char* primaries = nullptr;
};

Bytes MakeSets(const Maker& m) {
  const auto duration = static_cast<std::uint64_t>(m.duration);
  const Bytes rate = Fraction(25, 1);
  const Bytes created = Hex("07E5 03 04 05 06 07 02");  // 2021-03-04 05:06:07.008
  Bytes b;
  b.Add(Set(0x2F, 1, {{0x3B02, Hex("07E5 03 04 06 00 00 00")}, {0x3B06, Ids({2})}}));
  b.Add(Set(0x30, 2, {{0x3C01, Utf16("SONY")}, {0x3C02, Utf16("eVTR")}, {0x3C04, Utf16("1.00")}}));
  const std::vector<unsigned> tracks =
      m.timecodeOnTape ? std::vector<unsigned>{12, 13} : std::vector<unsigned>{11, 12, 13};
  b.Add(Set(0x36, 10,
            {{0x4401, Umid(1)}, {0x4405, created}, {0x4403, Ids(tracks)}, {0x4406, Ids({60})}}));
  b.Add(Set(0x3B, 11, {{0x4801, Num(1, 4)}, {0x4B01, rate}, {0x4803, Id(21)}}));
  b.Add(Set(0x0F, 21, {{0x0201, Hex(kTime)}, {0x0202, Num(duration, 8)}, {0x1001, Ids({31})}}));
  b.Add(Set(0x14, 31, {{0x1501, Num(916813, 8)}, {0x1502, Num(25, 2)}, {0x1503, Num(0, 1)}}));
  b.Add(
      Set(0x3B, 12, {{0x4801, Num(2, 4)}, {0x4B01, rate}, {0x4B02, Num(0, 8)}, {0x4803, Id(22)}}));
  b.Add(Set(0x0F, 22, {{0x0201, Hex(kPicture)}, {0x0202, Num(duration, 8)}, {0x1001, Ids({32})}}));
  b.Add(Set(0x11, 32, {{0x1101, Umid(2)}, {0x1102, Num(2, 4)}, {0x1201, Num(0, 8)}}));
  b.Add(Set(0x3B, 13, {{0x4B01, Fraction(48000, 1)}, {0x4803, Id(23)}}));
  b.Add(Set(0x0F, 23, {{0x0201, Hex(kSound)}, {0x0202, Num(480000, 8)}}));
  // The file package, whose video comes from a tape.
  b.Add(Set(0x37, 40, {{0x4401, Umid(2)}, {0x4403, Ids({41})}, {0x4701, Id(50)}}));
  b.Add(Set(0x3B, 41, {{0x4801, Num(2, 4)}, {0x4B01, rate}, {0x4803, Id(42)}}));
  b.Add(Set(0x0F, 42, {{0x0201, Hex(kPicture)}, {0x0202, Num(duration, 8)}, {0x1001, Ids({43})}}));
  b.Add(Set(0x11, 43, {{0x1101, Umid(3)}, {0x1102, Num(1, 4)}, {0x1201, Num(m.tapePosition, 8)}}));
  b.Add(Set(0x37, 45,
            {{0x4401, Umid(3)}, {0x4402, Utf16("Tape 7")}, {0x4403, Ids({11})}, {0x4701, Id(46)}}));
  b.Add(Set(0x2E, 46, {}));
  b.Add(Set(0x44, 50, {{0x3F01, Ids({51, 52, 53})}, {0x3001, rate}, {0x3002, Num(~0ULL, 8)}}));
  const Bytes primaries = m.primaries == nullptr ? Bytes() : Hex(m.primaries);
  b.Add(Set(0x28, 51,
            {{0x3219, primaries},
             {0x3202, Num(304, 4)},
             {0x3203, Num(720, 4)},
             {0x3208, Num(288, 4)},
             {0x3209, Num(720, 4)},
             {0x320C, Num(1, 1)},
             {0x320E, Fraction(16, 9)},
             {0x320D, Bytes(Num(2, 4)).U32(4).U32(7).U32(320)},
             {0x3301, Num(8, 4)},
             {0x3201, Hex("060E2B34 04010101 04010202 01020101")},
             {0x8001, Num(50000000, 4)},
             {0x321A, Hex("060E2B34 04010101 04010101 02010000")}}));
  for (const unsigned id : {52u, 53u}) {
    b.Add(Set(0x42, id, {{0x3D03, Fraction(48000, 1)}, {0x3D01, Num(24, 4)}, {0x3D07, Num(4, 4)}}));
  }
  b.Add(Set(
      0x3F, 60,
      {{0x5001, Utf16("Comments")}, {0x5003, Bytes("B").Fill(16, 1).Add(Utf16("good light"))}}));
  return b;
}

Bytes Primer() {
  Bytes value;
  value.U32(1).U32(18).U16(0x8001).Hex("060E2B34 01010105 04010602 010B0000");  // BitRate
  return Klv("060E2B34 02050101 0D010201 01050100", value);
}

Bytes Partition(unsigned kind, unsigned status, std::uint64_t footer, std::uint64_t headerBytes) {
  Bytes value;
  value.U16(1).U16(2).U32(512);                      // version, KAG
  value.U64(0).U64(0).U64(footer).U64(headerBytes);  // this, previous, footer, header bytes
  value.U64(0).U32(0).U64(0).U32(1);                 // index bytes and SID, body offset and SID
  value.Hex("060E2B34 04010101 0D010201 01010900");  // OP1a
  value.U32(0).U32(16);                              // essence containers
  Bytes key;
  key.Hex("060E2B34 02050101 0D010201 01").U8(kind).U8(status).U8(0);
  return Bytes(key.str()).U8(0x83).U24(value.size()).Add(value);
}

Bytes Fill(std::size_t count) {
  return Klv("060E2B34 01010102 03010210 01000000", Bytes().Fill(count));
}

Bytes MakeFile(const Maker& m) {
  const Bytes header = Bytes(Primer().str()).Add(MakeSets(m));
  Bytes b = Partition(2, m.status, m.footer, m.incomplete ? 0 : header.size());
  b.Add(Fill(300)).Add(header);
  b.Add(Klv("060E2B34 01020101 0D010301 15010500", Bytes().Fill(64)));  // essence
  return b;
}

TEST(MXFReader, ReadsTheHeaderOfARecorder) {
  const auto result = ReadWith(kMXFReader, MakeFile({}).str());
  EXPECT_TRUE(result.recognised);
  EXPECT_EQ(result.reads, 0);
  EXPECT_EQ(Facts(result),
            "identifier=060a2b340101010501010f2013000000111111111111111111111111"
            "00000001\n"
            "CreateDate=2021-03-04T05:06:07.008\n"
            "ModifyDate=2021-03-04T06:00:00\n"
            "CreatorTool=SONY eVTR 1.00\n"
            "videoFrameRate=25\n"
            "videoPixelDepth=8Int\n"
            "videoPixelAspectRatio=64/45\n"
            "videoColorSpace=CCIR-601\n"
            "videoCompressor=IMX\n"
            "videoFieldOrder=Upper\n"
            "audioSampleRate=48000\n"
            "audioSampleType=24Int\n"
            "audioChannelType=7.1\n"
            "audioCompressor=PCM\n"
            "fileDataRate=25/4\n"
            "cameraModel=eVTR\n"
            "comment=good light\n"
            "Make=Sony\n"
            "Model=eVTR\n"
            "software=SONY eVTR 1.00\n"
            "videoFrameSize=720x576 pixel\n"
            "startTimecode=10:11:12:13 25Timecode\n"
            "duration=250 @ 1/25\n");
}

TEST(MXFReader, PrimariesDecideBeforeCodingEquations) {
  const auto space = [](const char* primaries) {
    Maker maker;
    maker.primaries = primaries;
    return ReadWith(kMXFReader, MakeFile(maker).str()).Get(kNsDM, "videoColorSpace");
  };
  EXPECT_EQ(space("060E2B34 04010106 04010101 03030000"), "CCIR-709");
  EXPECT_EQ(space("060E2B34 0401010D 04010101 03040000"), "BT.2020");
  EXPECT_EQ(space("060E2B34 0401010D 04010101 03060000"), "") << "of cinema displays";
}

TEST(MXFReader, ReadsTheTimecodeOfTheTapePackage) {
  Maker m;
  m.timecodeOnTape = true;
  m.tapePosition = 25;
  const auto result = ReadWith(kMXFReader, MakeFile(m).str());
  EXPECT_EQ(result.Field("startTimecode", kNsDM, "timeValue"), "10:11:13:13");
}

TEST(MXFReader, ReadsTheNameOfTheTape) {
  EXPECT_EQ(ReadWith(kMXFReader, MakeFile({}).str()).Get(kNsDM, "tapeName"), "Tape 7");
}

TEST(MXFReader, ReadsTheDocumentOfTheCamera) {
  const std::string record =
      "<?xml version='1.0'?><NonRealTimeMeta><CreationDate value='2022-02-03T04:05:06+09:00'/>"
      "<Device manufacturer='Sony' modelName='PXW-X400' serialNo='0010042'/><Lens "
      "modelName='Zoom'/></NonRealTimeMeta>";
  const auto read = [&](std::size_t padding) {
    Bytes file = MakeFile({});
    file.Add(Klv("060E2B34 01010101 01010101 01010101", Bytes().Fill(padding)));
    return ReadWith(kMXFReader,
                    file.Add(Klv("060E2B34 01010101 02020202 02020202", Bytes(record))).str());
  };
  const auto result = read(0);
  EXPECT_EQ(result.Get(kNsTIFF, "Model"), "PXW-X400");
  EXPECT_EQ(result.Get(kNsAux, "SerialNumber"), "0010042");
  EXPECT_EQ(result.Get(kNsAux, "Lens"), "Zoom");
  EXPECT_EQ(result.Get(kNsXMP, "CreateDate"), "2022-02-03T04:05:06+09:00");
  // The head ends inside the document.
  const std::size_t before = MakeFile({}).size();
  EXPECT_EQ(read(kHeadSize - before - 140).Get(kNsAux, "SerialNumber"), "0010042");
}

TEST(MXFReader, ReadsTheSettingsOfTheFirstFrame) {
  constexpr char kLens[] =
      "060E2B34 02530101 0C020101 01010000 18 80000002 D077 80050002 D023 80070008 "
      "5A6F6F6D20313130";
  constexpr char kCamera[] =
      "060E2B34 02530101 0C020101 02010000 12 81090008 00000001 00000032 810B0002 0320";
  constexpr char kSoundItem[] = "060E2B34 01020101 0D010301 16010100";
  constexpr char kData[] = "060E2B34 01020101 0D010301 17010201";
  Bytes file = MakeFile({});
  const auto read = [&](const WantedProperties& wanted) {
    return ReadWith(kMXFReader, file.str(), {}, wanted);
  };
  file.Add(Klv(kSoundItem, Bytes().Fill(100'000)));
  file.Add(Klv(kData, Bytes().Hex("0002 0009 01 04 0030").Hex(kLens).Hex("AA55").Hex(kCamera)));
  const auto result = read(WantedProperties::All());
  EXPECT_EQ(result.Get(kNsAux, "Lens"), "Zoom 110");
  EXPECT_EQ(result.Get(kNsEXIF, "FNumber"), "280/100");
  EXPECT_EQ(result.Get(kNsEXIF, "FocalLength"), "350/10");
  EXPECT_EQ(result.Get(kNsEXIF, "ExposureTime"), "1/50");
  EXPECT_EQ(read(WantedProperties::None()).Get(kNsAux, "Lens"), "");
  EXPECT_EQ(read(WantedProperties::None()).reads, 0);
}

TEST(MXFReader, AcceptsARunInOnlyWithTheExtension) {
  const std::string file = std::string(1000, 'x') + MakeFile({}).str();
  EXPECT_FALSE(ReadWith(kMXFReader, file, "/a/clip.bin").recognised);
  const auto result = ReadWith(kMXFReader, file, "/a/CLIP.Mxf");
  EXPECT_TRUE(result.recognised);
  EXPECT_EQ(result.Field("duration", kNsDM, "value"), "250");
}

// A file with an open header, and a footer that contains the duration.
std::string MakeOpen(bool footerKnown) {
  Maker m;
  m.duration = -1;
  m.status = 1;
  Bytes body = MakeFile(m);
  if (footerKnown) body = MakeFile({-1, 1, 0, false, body.size() + 200'000, false, nullptr});
  const std::size_t footerAt = body.size() + 200'000;
  body.Fill(200'000);
  const Bytes sets = Bytes(Primer().str()).Add(MakeSets({}));
  body.Add(Partition(4, 4, footerAt, sets.size())).Add(sets);
  Bytes index;
  index.U32(0).U64(0).U32(0).U64(footerAt).U32(16 + 4 + 28);  // two partitions, length of the pack
  return body.Add(Klv("060E2B34 02050101 0D010201 01110100", index)).str();
}

TEST(MXFReader, ReadsTheFooterOnlyForAWantedDuration) {
  for (const bool known : {true, false}) {
    const auto result = ReadWith(kMXFReader, MakeOpen(known));
    EXPECT_EQ(result.Field("duration", kNsDM, "value"), "250") << known;
    EXPECT_EQ(result.reads, 1) << known;
    WantedProperties wanted = WantedProperties::None();
    wanted.Add(kNsDM, "videoFrameRate");
    const auto cheap = ReadWith(kMXFReader, MakeOpen(known), {}, wanted);
    EXPECT_EQ(cheap.reads, 0);
    EXPECT_EQ(cheap.Get(kNsDM, "videoFrameRate"), "25");
    EXPECT_TRUE(cheap.output.hasNative);
  }
}

TEST(MXFReader, ReadsAHeaderWithoutDeclaredLength) {
  Maker m;
  m.incomplete = true;
  EXPECT_EQ(ReadWith(kMXFReader, MakeFile(m).str()).Get(kNsDM, "videoFrameRate"), "25");
}

TEST(MXFReader, SurvivesTruncationAtEveryByte) {
  const std::string full = MakeFile({}).str();
  std::size_t lines = 0;
  for (std::size_t size = 0; size <= full.size(); ++size) {
    const auto result = ReadWith(kMXFReader, full.substr(0, size));
    const std::string facts = Facts(result);
    const auto now = static_cast<std::size_t>(std::ranges::count(facts, '\n'));
    EXPECT_GE(now + 3, lines) << "a longer file only loses fallback values, at size " << size;
    lines = std::max(lines, now);
  }
  EXPECT_EQ(lines, 23u);
}

TEST(MXFReader, SurvivesInvalidLengthsAndCycles) {
  // Each byte in turn set to FF and to 0: invalid lengths, counts, tags and references.
  const std::string full = MakeFile({}).str();
  for (std::size_t at = 0; at < full.size(); ++at) {
    for (const char value : {'\xFF', '\0'}) {
      std::string bad = full;
      bad[at] = value;
      const auto result = ReadWith(kMXFReader, bad);
      EXPECT_LE(result.reads, 3);
      EXPECT_LE(result.longestRead, 8u << 20);
    }
  }
  // Tapes that refer to each other, and tracks that are their own sequence.
  Maker m;
  m.timecodeOnTape = true;
  Bytes loop;
  loop.Add(Set(0x36, 10, {{0x4401, Umid(1)}, {0x4403, Ids({41})}}));
  loop.Add(Set(0x37, 40, {{0x4401, Umid(3)}, {0x4403, Ids({41})}, {0x4701, Id(50)}}));
  loop.Add(Set(0x44, 50, {{0x3F01, Ids({50, 50, 40})}}));
  loop.Add(Set(0x3B, 41, {{0x4B01, Fraction(25, 1)}, {0x4803, Id(42)}}));
  loop.Add(Set(0x0F, 42, {{0x0201, Hex(kPicture)}, {0x1001, Ids({43})}}));
  loop.Add(Set(0x11, 43, {{0x1101, Umid(3)}}));
  Bytes file = Partition(2, 4, 0, loop.size()).Add(loop);
  EXPECT_EQ(Facts(ReadWith(kMXFReader, file.str())).find("startTimecode"), std::string::npos);
}

TEST(MXFReader, LimitsReadsOfCyclicPartitions) {
  Maker m;
  m.status = 1;
  m.duration = -1;
  for (const std::uint64_t footer : {0ULL, 1ULL, ~0ULL, 0x8000000000000000ULL}) {
    m.footer = footer;
    const auto result = ReadWith(kMXFReader, MakeFile(m).str());
    EXPECT_EQ(result.Get(kNsDM, "videoFrameRate"), "25");
    EXPECT_EQ(result.Field("duration", kNsDM, "value"), "") << footer;
  }
  Bytes huge = Partition(2, 4, 0, ~0ULL).Add(MakeSets({})).Fill(9 << 20);
  const auto result = ReadWith(kMXFReader, huge.str());
  EXPECT_LE(result.longestRead, 5u << 20);
  EXPECT_EQ(result.Get(kNsDM, "videoFrameRate"), "25");
}

TEST(MXFReader, StaysFastWithManySets) {
  // 40,000 packages that share a descriptor with 250 others, all with ids of equal hash.
  std::vector<unsigned> ids;
  Bytes sets = Set(0x36, 10, {{0x4401, Umid(1)}, {0x4403, Ids({})}});
  for (unsigned id = 100; id < 350; ++id) {
    ids.push_back(id);
    sets.Add(Set(0x42, id, {{0x3D07, Num(1, 4)}}));
  }
  sets.Add(Set(0x44, 50, {{0x3F01, Ids(ids)}}));
  for (unsigned n = 0; n < 40'000; ++n) {
    sets.Add(Set(0x37, 1000 + n, {{0x4701, Id(50)}}));
  }
  const Bytes file = Partition(2, 4, 0, sets.size()).Add(sets);
  const auto result = ReadWith(kMXFReader, file.str());
  EXPECT_EQ(result.Get(kNsDM, "audioChannelType"), "Other") << "250 channels";
}

// Size, rate, timecode and duration as printed by independent readers; comments explain the other
// rows. Drop-frame timecode is always written with ";".
struct Sample {
  const char* file;
  const char* size;
  const char* rate;
  const char* timecode;
  const char* duration;
};

class MXFSamples : public testing::TestWithParam<Sample> {};

TEST_P(MXFSamples, MatchIndependentReaders) {
  const Sample& sample = GetParam();
  const auto bytes = ReadSample(std::string("mxf/").append(sample.file));
  if (!bytes) GTEST_SKIP() << "samples not found";
  const auto result = ReadWith(kMXFReader, *bytes);
  EXPECT_TRUE(result.recognised);
  EXPECT_TRUE(result.output.hasNative);
  EXPECT_LE(result.reads, 4);
  const std::string width = result.Field("videoFrameSize", kNsDimensions, "w");
  const std::string height = result.Field("videoFrameSize", kNsDimensions, "h");
  EXPECT_EQ(width.empty() ? "" : width + "x" + height, sample.size);
  EXPECT_EQ(result.Get(kNsDM, "videoFrameRate"), sample.rate);
  EXPECT_EQ(result.Field("startTimecode", kNsDM, "timeValue"), sample.timecode);
  const std::string value = result.Field("duration", kNsDM, "value");
  EXPECT_EQ(value.empty() ? "" : value + " @ " + result.Field("duration", kNsDM, "scale"),
            sample.duration);
}

INSTANTIATE_TEST_SUITE_P(
    Recorded, MXFSamples,
    testing::Values(
        Sample{"bmx-d10_qt_klv-sample.mxf", "720x576", "25", "23:58:30:00", "2 @ 1/25"},
        // Header and footer contain 0 frames at 1/1, audio only.
        Sample{"exiftool-MXF.mxf", "", "", "00:00:00:00", "0 @ 1/1"},
        // Open header, and the footer is missing.
        Sample{"file-type-fixture.head128k.mxf", "720x576", "25", "00:00:00:00", ""},
        Sample{"gen-as02bundle.mxf", "720x576", "25", "10:11:12:13", "5 @ 1/25"},
        Sample{"gen-ff_op1a_25_unseekable_open_header.mxf", "720x576", "25", "10:20:30:05", ""},
        Sample{"gen-ff_op1a_dv_525.head128k.mxf", "720x480", "29.97", "01:02:03:04",
               "3 @ 1001/30000"},
        Sample{"gen-ff_opatom_dnxhd_720p5994.head320k.mxf", "1280x720", "59.94", "00;59;59;58",
               "6 @ 1001/60000"},
        Sample{"gen-op1a_avci100_1080i2997_ndf.head128k.mxf", "1920x1080", "29.97", "00:00:59:29",
               "3 @ 1001/30000"},
        Sample{"gen-op1a_avci50_720p50.head128k.mxf", "1280x720", "50", "09:08:07:49", "3 @ 1/50"},
        Sample{"gen-op1a_mpeg2lg_1440x1080i25.head128k.mxf", "1440x1080", "25", "05:04:03:02",
               "13 @ 1/25"},
        Sample{"gen-op1a_rdd36_1080i_rate24.mxf", "1920x1080", "24", "01:00:00:12", "2 @ 1/24"},
        Sample{"gen-op1a_soundonly.mxf", "", "", "00:00:00:00", "5 @ 1/25"},
        Sample{"gen-op1a_vc3_1080p23976.head128k.mxf", "1920x1080", "23.976", "01:00:00:00",
               "1 @ 1001/24000"},
        // OP-Atom of editors: audio files contain the frame rate; one independent reader misses the
        // timecode of the video files.
        Sample{"gen-opatom_avci100_1080i2997_a1.mxf", "", "29.97", "10;11;12;13", "3 @ 1001/30000"},
        Sample{"gen-opatom_avci100_1080i2997_v1.head320k.mxf", "1920x1080", "29.97", "10;11;12;13",
               "3 @ 1001/30000"},
        Sample{"gen-opatom_dv100_1080i25_a1.mxf", "", "25", "10:11:12:13", "3 @ 1/25"},
        Sample{"gen-opatom_dv100_1080i25_a2.mxf", "", "25", "10:11:12:13", "3 @ 1/25"},
        Sample{"gen-opatom_dv100_1080i25_v1.head320k.mxf", "1440x1080", "25", "10:11:12:13",
               "3 @ 1/25"},
        Sample{"gen-opatom_dv100_720p5994_a1.mxf", "", "59.94", "10;11;12;13", "3 @ 1001/60000"},
        Sample{"gen-rdd9_422_1080i2997_df.head128k.mxf", "1920x1080", "29.97", "01;02;03;04",
               "13 @ 1001/30000"},
        Sample{"gen-rdd9_422_1080p23976.head128k.mxf", "1920x1080", "23.976", "23:59:58:00",
               "13 @ 1001/24000"},
        // Audio in units of samples.
        Sample{"photon-AUDIO.null_terminated_strings.mxf", "", "", "", "10 @ 1/48000"},
        Sample{"photon-CHIMERA_NETFLIX_2398.hdr.mxf", "3840x2160", "23.976", "00:00:00:00",
               "8929 @ 1001/24000"},
        Sample{"photon-NMPC_6000ms_6Ch_ch_id.hdr.mxf", "", "", "00:00:00:00", "2880001 @ 1/48000"},
        Sample{"photon-Netflix_Plugfest_Oct2015.hdr.mxf", "3840x2160", "23.976", "00:00:00:00",
               "7148 @ 1001/24000"},
        Sample{"regxmllib-audio1.mxf", "", "", "00:00:00:00", "2002 @ 1/48000"},
        Sample{"regxmllib-audio2.mxf", "", "", "00:00:00:00", "2000 @ 1/48000"},
        Sample{"regxmllib-class14.mxf", "", "", "00:00:00:00", ""},
        Sample{"regxmllib-escape-chars.head128k.mxf", "", "", "00:00:00:00", "66141 @ 1/48000"},
        // The timecode of an editor's file is in its tape package; independent readers miss it.
        Sample{"regxmllib-indirect.head128k.mxf", "3840x2160", "25", "01:00:00:00", "750 @ 1/25"},
        Sample{"regxmllib-open-incomplete-header.head128k.mxf", "1920x1080", "25", "00:00:00:00",
               ""},
        Sample{"regxmllib-utf8_embedded_text.mxf", "1920x1080", "25", "09:59:30:00", "0 @ 1/25"},
        Sample{"regxmllib-video2.mxf", "1920x1080", "24", "00:00:00:00", "1 @ 1/24"},
        Sample{"shared-mime-info-small_wav.mxf", "", "", "00:00:00:00", "1 @ 1/5"}));

// Labels of the SMPTE registry, by their last eight bytes.
TEST(MXFLabels, NameCodecsAndColorSpaces) {
  using namespace Sorvik::xmp::mxf;
  using Labels = std::vector<const char*>;
  const auto names = [](const char* (*nameOf)(const std::optional<Key>&), const Labels& endings) {
    std::string text;
    for (const char* ending : endings) {
      const std::string label = Bytes().Hex("060E2B34 04010101").Hex(ending).str();
      Key key;
      std::copy(label.begin(), label.end(), key.bytes.begin());
      const char* name = nameOf(key);
      text += (name == nullptr ? "-" : std::string(name)) + ";";
    }
    return text;
  };
  EXPECT_EQ(
      names(PictureCodingName,
            Labels{"0401020201020101", "0401020201322101", "0401020201323101", "0401020201324101",
                   "0401020201200200", "0401020201310100", "0401020201320100", "0401020201040200",
                   "0401020202010200", "0401020202020100", "0401020202020200", "0401020202020300",
                   "0401020202020400", "0401020202020500", "0401020203010100", "0401020203060100",
                   "0401020203020100", "0401020271010000", "0401020101020101", "0401030000000000"}),
      "IMX;AVC-Intra 50;AVC-Intra 100;AVC-Intra 200;MPEG-4;AVC;AVC;MPEG-2;DV;DV;DV;"
      "DVCPRO 50;DVCPRO 50;DVCPRO HD;JPEG 2000;ProRes;VC-3;VC-3;Uncompressed;-;");
  EXPECT_EQ(names(ContainerName, Labels{"0D01030102010101", "0D01030102020101", "0D01030102046001",
                                        "0D01030102050101", "0D010301020C0100", "0D01030102106001",
                                        "0D01030102110100", "0D010301021C0100", "0D01030102060100",
                                        "0D01030202010101", "0E15000402100001"}),
            "IMX;DV;MPEG-2;Uncompressed;JPEG 2000;AVC;VC-3;ProRes;-;-;HEVC;");
  EXPECT_EQ(
      names(SoundCodingName, Labels{"0402020203010100", "0402020203020100", "0402020203021C00",
                                    "0402020203020500", "0402020203030100", "0402020101000000"}),
      "A-law;AC3;Dolby E;MPEG;AAC;PCM;");
  EXPECT_EQ(
      names(ColorSpaceName, Labels{"0401010102010000", "0401010102020000", "0401010102030000",
                                   "0401010103020000", "0401010103030000", "0401010103040000"}),
      "CCIR-601;CCIR-709;-;CCIR-601;CCIR-709;BT.2020;");
}

}  // namespace
