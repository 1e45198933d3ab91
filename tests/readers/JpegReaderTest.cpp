// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "foundation/Digest.h"
#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "support/TempTree.h"
#include "support/TiffBytes.h"
#include "xmp/XMPFiles.h"
#include "xmp/readers/JpegReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::Facts;
using sorvik_test::ReadSample;
using sorvik_test::ReadWith;
using sorvik_test::TiffBytes;

Bytes Segment(unsigned marker, const std::string& body) {
  return Bytes().U8(0xFF).U8(marker).U16(body.size() + 2).Text(body);
}
Bytes Packet(const std::string& xmp) {
  return Segment(0xE1, std::string("http://ns.adobe.com/xap/1.0/\0", 29) + xmp);
}
Bytes Exif(const std::string& tiff) { return Segment(0xE1, std::string("Exif\0\0", 6) + tiff); }
Bytes Part(const std::string& guid, std::size_t full, std::size_t offset, const std::string& data) {
  Bytes body;
  body.Text(std::string_view("http://ns.adobe.com/xmp/extension/\0", 35)).Text(guid);
  body.U32(full).U32(offset).Text(data);
  return Segment(0xE1, body.str());
}
// Start of image, the segments, start of scan and some pixels.
std::string Jpeg(const std::vector<Bytes>& segments) {
  Bytes b;
  b.U16(0xFFD8);
  for (const Bytes& segment : segments) b.Add(segment);
  return b.Add(Segment(0xDA, "scan")).Fill(100, 0x55).U16(0xFFD9).str();
}
constexpr const char* kNsNote = "http://ns.adobe.com/xmp/note/";
std::string Note(const std::string& name, const std::string& value) {
  return "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description "
         "xmlns:n='" +
         std::string(kNsNote) + "' n:" + name + "='" + value + "'/></rdf:RDF>";
}
std::string Main(const std::string& guid) { return Note("HasExtendedXMP", guid); }

TEST(JpegReader, ReadsPacketAndExifAmongOtherSegments) {
  TiffBytes t;
  const std::string file = Jpeg({Segment(0xE0, "JFIF"), Bytes().U8(0xFF), Bytes().U16(0xFF01),
                                 Exif(t.File({t.Ascii(271, "Maker")})), Packet("<first/>"),
                                 Packet("<second/>"), Segment(0xE1, "something else")});
  const auto result = ReadWith(kJpegReader, file);
  EXPECT_TRUE(result.recognised);
  EXPECT_EQ(result.output.packet, "<first/>");
  EXPECT_TRUE(result.output.hasNative);
  EXPECT_EQ(Facts(result), "Make=Maker\n");
  EXPECT_EQ(result.reads, 0);
  EXPECT_FALSE(ReadWith(kJpegReader, Jpeg({Segment(0xE0, "JFIF")})).output.hasNative);
  // Description, model, software, artist, copyright: each counts alone.
  for (const int tag : {270, 272, 305, 315, 33432}) {
    const auto exif = ReadWith(
        kJpegReader, Jpeg({Exif(t.File({t.Ascii(static_cast<std::uint16_t>(tag), "text")}))}));
    EXPECT_TRUE(exif.output.hasNative) << tag;
  }
}

// Precision, height, width, components.
Bytes Frame(unsigned marker) {
  return Segment(marker, Bytes().U8(8).U16(200).U16(300).U8(3).str());
}

TEST(JpegReader, GivesTheSizeAsShown) {
  TiffBytes t;
  for (const unsigned orientation : {1u, 4u, 5u, 8u}) {
    const Bytes exif = Exif(t.File({t.Shorts(274, {orientation})}));
    for (const unsigned marker : {0xC0u, 0xC2u, 0xCFu}) {
      const auto result =
          ReadWith(kJpegReader, Jpeg({exif, Segment(0xC4, "1234567"), Frame(marker)}));
      EXPECT_EQ(Facts(result), std::string("videoPixelDepth=8Int\nvideoFrameSize=") +
                                   (orientation < 5 ? "300x200 pixel\n" : "200x300 pixel\n"));
    }
  }
  // Without a tag, or with an invalid one.
  EXPECT_EQ(Facts(ReadWith(kJpegReader, Jpeg({Frame(0xC1)}))),
            "videoPixelDepth=8Int\nvideoFrameSize=300x200 pixel\n");
  EXPECT_EQ(Facts(ReadWith(kJpegReader, Jpeg({Exif(t.File({t.Shorts(274, {9})})), Frame(0xC1)}))),
            "videoPixelDepth=8Int\nvideoFrameSize=300x200 pixel\n");
}

Bytes Dataset(unsigned number, const std::string& text) {
  return Bytes().U8(0x1C).U8(2).U8(number).U16(text.size()).Text(text);
}

// IPTC records fill what Exif lacks. Resources longer than a segment continue in the next one.
TEST(JpegReader, ReadsIptcOfSeveralSegments) {
  TiffBytes t;
  Bytes iptc;
  iptc.Hex("1C 01 5A 0003 1B2547");  // the character set, in the envelope record
  for (const auto& [number, text] :
       {std::pair(5u, "Title"), std::pair(25u, "one"), std::pair(25u, "two"),
        std::pair(55u, "20210304"), std::pair(60u, "050607+0100"), std::pair(80u, "IPTC author"),
        std::pair(90u, "K\xC3\xB6ln"), std::pair(116u, "Rights"), std::pair(120u, "Caption")}) {
    iptc.Add(Dataset(number, text));
  }
  Bytes resources;
  resources.Text("8BIM").U16(1005).Hex("03414243").U32(3).Text("odd").U8(0);  // named, padded
  resources.Text("8BIM").U16(1028).U16(0).U32(iptc.size()).Add(iptc);
  const std::string header("Photoshop 3.0\0", 14);
  const std::string bytes = resources.str();
  const auto result = ReadWith(
      kJpegReader,
      Jpeg({Segment(0xED, header + bytes.substr(0, 50)), Segment(0xED, header + bytes.substr(50)),
            Segment(0xED, "other"), Exif(t.File({t.Ascii(315, "Exif author")}))}));
  EXPECT_EQ(sorvik_test::TextFacts(result),
            "title=Title\ndescription=Caption\nrights=Rights\ncreator=Exif author\n"
            "copyright=Rights\n");
  EXPECT_EQ(result.Get(kNsPhotoshop, "City"), "K\xC3\xB6ln");
  EXPECT_EQ(result.Get(kNsPhotoshop, "DateCreated"), "2021-03-04T05:06:07+01:00");
  std::string keyword;
  EXPECT_TRUE(result.output.native.GetArrayItem(kNsDC, "subject", 2, &keyword));
  EXPECT_EQ(keyword, "two");
  EXPECT_TRUE(result.output.hasNative);
  // A dataset that extends past the end, and an unknown date.
  const Bytes partial = Bytes().Add(Dataset(55, "20210000")).Hex("1C 02 05 0100").Text("cut");
  const auto damaged = ReadWith(
      kJpegReader,
      Jpeg({Segment(
          0xED,
          header + Bytes().Text("8BIM").U16(1028).U16(0).U32(partial.size()).Add(partial).str())}));
  EXPECT_FALSE(damaged.output.hasNative);
}

TEST(JpegReader, StopsAtTheScan) {
  const std::string file = Bytes(Jpeg({})).Add(Packet("<late/>")).str();
  EXPECT_EQ(ReadWith(kJpegReader, file).output.packet, "");
}

TEST(JpegReader, JoinsExtendedXMPInAnyOrder) {
  const std::string full = Note("Extended", "value");
  const std::string guid = Sorvik::foundation::MD5Hex(full);
  const std::size_t n = full.size();
  const std::string other(32, 'A');
  const auto extension = [](const std::vector<Bytes>& segments) {
    return ReadWith(kJpegReader, Jpeg(segments)).output.extendedPacket;
  };
  const Bytes first = Part(guid, n, 0, full.substr(0, 10));
  const Bytes second = Part(guid, n, 10, full.substr(10));

  EXPECT_EQ(extension({second, Packet(Main(guid)), Part(other, n, 0, full), first}), full);
  EXPECT_EQ(extension({Packet(Main(guid)), first, first, second}), full) << "duplicate part";
  std::string lower = guid;
  for (char& c : lower) c = c >= 'A' && c <= 'F' ? static_cast<char>(c + 32) : c;
  ASSERT_NE(lower, guid);
  EXPECT_EQ(extension({Packet(Main(lower)), first, second}), full) << "digest in lower case";
  EXPECT_EQ(extension({Packet(Main(guid)), Part(lower, n, 0, full)}), full);
  EXPECT_EQ(extension({Packet(Main(guid)), first}), "") << "a part is missing";
  EXPECT_EQ(extension({Packet(Main(other)), first, second}), "") << "of another image";
  EXPECT_EQ(extension({first, second}), "") << "unreferenced";
  EXPECT_EQ(extension({Packet("not XML"), first, second}), "");
  EXPECT_EQ(extension({Packet(Main(other)), Part(other, n, 0, full)}), "") << "wrong digest";
  EXPECT_EQ(extension({Packet(Main(guid)), first, Part(guid, n, 12, full.substr(12))}), "")
      << "a gap";

  const sorvik_test::TempTree tree;
  TXMPFiles files;
  TXMPMeta meta;
  std::string value;
  const std::string file = tree.File("a.jpg", Jpeg({Packet(Main(guid)), first, second}));
  ASSERT_TRUE(files.OpenFile(file, kXMP_UnknownFile, 0));
  ASSERT_TRUE(files.GetXMP(&meta));
  EXPECT_TRUE(meta.GetProperty(kNsNote, "Extended", &value));
}

TEST(JpegReader, ReadsSegmentsAfterTheHeadInOneRead) {
  std::string full(150'000, 'x');
  const std::string guid = Sorvik::foundation::MD5Hex(full);
  std::vector<Bytes> segments = {Packet(Main(guid))};
  for (std::size_t at = 0; at < full.size(); at += 60'000) {
    segments.push_back(Part(guid, full.size(), at, full.substr(at, 60'000)));
  }
  const auto result = ReadWith(kJpegReader, Jpeg(segments));
  EXPECT_EQ(result.output.extendedPacket, full);
  EXPECT_EQ(result.reads, 1);
}

TEST(JpegReader, SurvivesInvalidSegments) {
  TiffBytes t;
  const std::string good = Jpeg({Exif(t.File({t.Ascii(271, "Maker")})), Packet("<p/>"),
                                 Part(std::string(32, '0'), 4, 0, "part")});
  for (std::size_t size = 0; size <= good.size(); ++size) {
    const auto result = ReadWith(kJpegReader, good.substr(0, size));
    EXPECT_TRUE(std::string("<p/>").starts_with(result.output.packet)) << size;
  }
  Bytes zero;
  zero.U16(0xFFD8).U16(0xFFE1).U16(0).Add(Packet("<p/>"));
  EXPECT_EQ(ReadWith(kJpegReader, zero.str()).output.packet, "") << "length 0";
  Bytes shortPart;
  shortPart.U16(0xFFD8).Add(
      Segment(0xE1, std::string("http://ns.adobe.com/xmp/extension/\0", 35) + "0123"));
  ReadWith(kJpegReader, shortPart.str());
  EXPECT_FALSE(ReadWith(kJpegReader, Bytes().U16(0xFFD8).str()).recognised);
  // Endless fill bytes are bounded.
  EXPECT_LE(ReadWith(kJpegReader, Bytes().U16(0xFFD8).Fill(500'000, 0xFF).str()).reads, 2);
}

TEST(JpegReader, ReadsSamples) {
  const auto extended = ReadSample("xmp/derived-exiftool-extendedXMP.jpg");
  const auto outOfOrder = ReadSample("xmp/exiftool-ExtendedXMP.jpg");
  const auto camera = ReadSample("xmp/exiftool-ExifTool.jpg");
  if (!extended || !outOfOrder || !camera) GTEST_SKIP() << "samples not found";

  const auto result = ReadWith(kJpegReader, *extended);
  EXPECT_EQ(result.reads, 1) << "101 kB: the head and the rest";
  EXPECT_FALSE(result.output.packet.empty());
  EXPECT_FALSE(result.output.extendedPacket.empty());

  const auto parts = ReadWith(kJpegReader, *outOfOrder);
  TXMPMeta meta;
  meta.ParseFromBuffer(parts.output.extendedPacket.data(),
                       static_cast<std::uint32_t>(parts.output.extendedPacket.size()));
  std::string producer;
  EXPECT_TRUE(meta.GetProperty("http://ns.adobe.com/pdf/1.3/", "Producer", &producer));
  EXPECT_EQ(producer, "Just ExifTool again");

  EXPECT_EQ(Facts(ReadWith(kJpegReader, *camera)),
            "CreateDate=2001-05-19T18:36:41\n"
            "ModifyDate=2004-02-26T09:36:46\n"
            "CreatorTool=Maker PixelDesk 7.0\n"
            "videoPixelDepth=8Int\n"
            "Make=FUJIFILM\n"
            "Model=FinePix2400Zoom\n"
            "software=Maker PixelDesk 7.0\n"
            "videoFrameSize=8x8 pixel\n");
}

}  // namespace
