// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdio>

#include "support/Bytes.h"
#include "support/Deflated.h"
#include "support/ReadWith.h"
#include "support/TiffBytes.h"
#include "xmp/readers/PngReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::Deflated;
using sorvik_test::Facts;
using sorvik_test::ReadDamaged;
using sorvik_test::ReadSample;
using sorvik_test::ReadWith;
using sorvik_test::TextFacts;
using sorvik_test::TiffBytes;

Bytes Chunk(const std::string& kind, const std::string& data) {
  return Bytes().U32(data.size()).Text(kind).Text(data).U32(0);  // the checksum isn't verified
}
std::string Png(const std::vector<Bytes>& chunks) {
  Bytes b;
  b.Hex("89 504E47 0D0A 1A 0A").Add(Chunk("IHDR", std::string(13, '\0')));
  for (const Bytes& chunk : chunks) b.Add(chunk);
  return b.Add(Chunk("IEND", "")).str();
}
// Keyword, NUL, compression flag, method, language, NUL, translated keyword, NUL, text.
Bytes IText(const std::string& keyword, const std::string& text, bool packed = false) {
  Bytes b;
  b.Text(keyword).U8(0).U8(packed ? 1 : 0).U8(0).Text("en").U8(0).Text("k").U8(0);
  return Chunk("iTXt", b.Text(packed ? Deflated(text) : text).str());
}
Bytes Text(const std::string& keyword, const std::string& text) {
  return Chunk("tEXt", Bytes().Text(keyword).U8(0).Text(text).str());
}
const char kXMP[] = "XML:com.adobe.xmp";

TEST(PngReader, ReadsPlainAndCompressedPackets) {
  for (const bool packed : {false, true}) {
    const auto result =
        ReadWith(kPngReader, Png({IText(kXMP, "<p/>", packed), IText(kXMP, "2nd")}));
    EXPECT_TRUE(result.recognised);
    EXPECT_EQ(result.output.packet, "<p/>");
    EXPECT_FALSE(result.output.hasNative);
  }
}

TEST(PngReader, ReadsTextsTimeAndExif) {
  TiffBytes t;
  const auto result = ReadWith(
      kPngReader,
      Png({Text("Title", "Caf\xE9"), Text("Author", "A. One;B. Two"), Text("Source", "unknown"),
           Chunk("zTXt", Bytes().Text("Description").U16(0).Text(Deflated("Packed")).str()),
           IText("Copyright", "\xC2\xA9 me", true), Text("Software", "Tool"),
           Text("Creation Time", "2020-01-02T03:04:05+01:00"), Text("Comment", "None"),
           Chunk("tIME", Bytes().U16(2021).U8(3).U8(4).U8(5).U8(6).U8(7).str()),
           Chunk("eXIf", t.File({t.Ascii(271, "Maker")}))}));
  EXPECT_TRUE(result.output.hasNative);
  EXPECT_EQ(Facts(result),
            "CreateDate=2020-01-02T03:04:05\n"
            "ModifyDate=2021-03-04T05:06:07Z\n"
            "CreatorTool=Tool\n"
            "Make=Maker\n"
            "software=Tool\n");
  EXPECT_EQ(TextFacts(result),
            "title=Caf\xC3\xA9\n"
            "description=Packed\n"
            "rights=\xC2\xA9 me\n"
            "creator=A. One\n"
            "creator=B. Two\n"
            "copyright=\xC2\xA9 me\n"
            "logComment=None\n");
  EXPECT_FALSE(ReadWith(kPngReader, Png({Text("Source", "unknown")})).output.hasNative);
}

TEST(PngReader, FindsTextsAfterALargeImageInFewReads) {
  const Bytes picture = Chunk("IDAT", std::string(300'000, 'p'));
  const auto result = ReadWith(kPngReader, Png({Text("Title", "In front"), picture, picture,
                                                Text("Author", "After"), IText(kXMP, "<p/>")}));
  EXPECT_EQ(result.output.packet, "<p/>");
  EXPECT_EQ(TextFacts(result), "title=In front\ncreator=After\n");
  EXPECT_EQ(result.reads, 3);
  // Data inside the image that looks like a chunk doesn't lead to the end of the file.
  const Bytes false1 = Chunk("IDAT", std::string(300'000, 'p') + IText(kXMP, "<no/>").str());
  EXPECT_EQ(ReadWith(kPngReader, Png({false1})).output.packet, "");
}

TEST(PngReader, FindsALongPacketAfterTheImage) {
  const std::string packet = "<p>" + std::string(200'000, ' ') + "</p>";
  for (const std::size_t chunkSize : {8192u, 70'000u, 600'000u}) {
    std::vector<Bytes> chunks(1'800'000 / chunkSize, Chunk("IDAT", std::string(chunkSize, 'p')));
    chunks.push_back(Chunk("IDAT", "last"));
    chunks.push_back(IText(kXMP, packet));
    chunks.push_back(Text("Author", "After"));
    const auto result = ReadWith(kPngReader, Png(chunks));
    EXPECT_EQ(result.output.packet, packet) << chunkSize;
    EXPECT_EQ(TextFacts(result), "creator=After\n") << chunkSize;
    EXPECT_LE(result.reads, 16) << chunkSize;
  }
}

// The size of IHDR, exchanged by the orientation of an Exif block after the picture.
TEST(PngReader, GivesTheSizeAsShown) {
  TiffBytes t;
  const Bytes exif = Chunk("eXIf", t.File({t.Shorts(274, {8})}));
  const Bytes header = Chunk("IHDR", Bytes().U32(300).U32(200).Fill(5).str());
  EXPECT_EQ(Facts(ReadWith(kPngReader, Png({header}))), "videoFrameSize=300x200 pixel\n");
  EXPECT_EQ(Facts(ReadWith(kPngReader, Png({header, Chunk("IDAT", "p"), exif}))),
            "videoFrameSize=200x300 pixel\n");
}

TEST(PngReader, ReadsRawProfiles) {
  const auto profile = [](const std::string& type, const std::string& bytes, bool packed) {
    std::string text = "\n" + type + "\n    " + std::to_string(bytes.size()) + "\n";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      char digits[4];
      std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(bytes[i]));
      text += digits;
      if (i % 36 == 35) text += "\n";
    }
    const std::string keyword = "Raw profile type " + type;
    return packed ? Chunk("zTXt", keyword + std::string(2, '\0') + Deflated(text))
                  : Text(keyword, text);
  };
  TiffBytes t;
  const std::string exif = std::string("Exif\0\0", 6) + t.File({t.Ascii(271, "Maker")});
  const std::string iptc = Bytes().Hex("1C 02 05").U16(5).Text("Title").str();
  const std::string resources =
      Bytes().Text("8BIM").U16(1028).U16(0).U32(iptc.size()).Text(iptc).str();
  for (const bool packed : {false, true}) {
    EXPECT_EQ(Facts(ReadWith(kPngReader, Png({profile("exif", exif, packed)}))), "Make=Maker\n");
    EXPECT_EQ(Facts(ReadWith(kPngReader, Png({profile("APP1", exif, packed)}))), "Make=Maker\n");
    for (const std::string& records : {iptc, resources}) {
      EXPECT_EQ(TextFacts(ReadWith(kPngReader, Png({profile("iptc", records, packed)}))),
                "title=Title\n");
    }
    EXPECT_EQ(ReadWith(kPngReader, Png({profile("xmp", "<p/>", packed)})).output.packet, "<p/>");
  }
  EXPECT_FALSE(
      ReadWith(kPngReader, Png({Text("Raw profile type iptc", "\niptc\n")})).output.hasNative);
}

TEST(PngReader, SurvivesTruncationAndCorruption) {
  ReadDamaged(kPngReader, Png({IText(kXMP, "<p/>", true), Text("Title", "T"), Chunk("tIME", "123"),
                               Chunk("eXIf", "MM")}));
  // A compressed text that expands to 64 MiB is dropped.
  const auto bomb = Png({IText("Title", std::string(std::size_t{64} << 20, 'x'), true)});
  EXPECT_LT(bomb.size(), 100'000u);
  EXPECT_EQ(TextFacts(ReadWith(kPngReader, bomb)), "");
  // Texts without a NUL, chunks whose length exceeds the file.
  EXPECT_EQ(TextFacts(ReadWith(kPngReader, Png({Chunk("tEXt", "Title"), Chunk("iTXt", "Title")}))),
            "");
  Bytes damaged;
  damaged.Hex("89 504E47 0D0A 1A 0A")
      .U32(0xFFFFFFF0)
      .Text("tEXtTitle")
      .U8(0)
      .Text("T")
      .Fill(70'000);
  EXPECT_EQ(TextFacts(ReadWith(kPngReader, damaged.str())), "");
  // A tail full of chunks that don't lead to the end.
  Bytes chain;
  chain.Add(Chunk("IDAT", std::string(70'000, 'p')));
  for (int i = 0; i < 6000; ++i) chain.Add(Chunk("tEXt", ""));
  EXPECT_EQ(TextFacts(ReadWith(kPngReader, Png({}).substr(0, 33) + chain.str())), "");
}

TEST(PngReader, ReadsSamples) {
  for (const char* name : {"xmp/derived-exiftool-xmpDM.png", "xmp/exiftool-PNG.png"}) {
    const auto bytes = ReadSample(name);
    if (!bytes) GTEST_SKIP() << "samples not found";
    const auto result = ReadWith(kPngReader, *bytes);
    EXPECT_NE(result.output.packet.find("<rdf:RDF"), std::string::npos) << name;
    EXPECT_EQ(result.reads, 0);
  }
}

}  // namespace
