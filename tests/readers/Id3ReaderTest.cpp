// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "xmp/readers/Id3Reader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::ReadWith;

Bytes Synchsafe(std::size_t value) {
  Bytes b;
  for (const int shift : {21, 14, 7, 0}) b.U8(value >> shift & 0x7F);
  return b;
}
Bytes Frame(unsigned version, const std::string& id, const std::string& data, unsigned flags = 0) {
  Bytes b;
  b.Text(id);
  if (version == 4) {
    b.Add(Synchsafe(data.size()));
  } else {
    b.U32(data.size());
  }
  return b.U16(flags).Text(data);
}
std::string File(unsigned version, const Bytes& frames, unsigned flags = 0) {
  Bytes b;
  b.Text("ID3").U8(version).U8(0).U8(flags).Add(Synchsafe(frames.size() + 20)).Add(frames);
  return b.Fill(20).Hex("FFFB9064").Fill(500).str();  // padding, audio
}
std::string Private(const std::string& packet) { return std::string("XMP\0", 4) + packet; }

TEST(Id3Reader, ReadsThePrivateFrameOfXMP) {
  const std::string picture = "<?xpacket begin=''?><picture/><?xpacket end='w'?>";
  const std::string packet = "<p>" + std::string(100'000, ' ') + "</p>";
  for (const unsigned version : {3u, 4u}) {
    const Bytes frames = Bytes()
                             .Add(Frame(version, "TIT2", "Title"))
                             .Add(Frame(version, "APIC", picture))
                             .Add(Frame(version, "PRIV", std::string("other\0x", 7)));
    EXPECT_EQ(ReadWith(kId3Reader, File(version, frames)).output.packet, "");
    const std::string file =
        File(version, Bytes(frames).Add(Frame(version, "PRIV", Private(packet))));
    const auto result = ReadWith(kId3Reader, file);
    EXPECT_TRUE(result.recognised);
    EXPECT_EQ(result.output.packet, packet);
    EXPECT_EQ(result.reads, 2) << "the packet, and what follows it";
  }
}

TEST(Id3Reader, ReadsTextsInAllEncodings) {
  const auto frames = [](unsigned version) {
    Bytes b;
    b.Add(Frame(version, "TIT2", "\1\xFF\xFE" + std::string("T\0\xE9\0", 4)));
    b.Add(Frame(version, "TPE1", std::string("\0Andr\xE9\0second", 13)));
    b.Add(Frame(version, "TALB", "\3\xC3\xA9"));
    b.Add(Frame(version, "TCON", std::string("\2\0G", 3)));
    b.Add(Frame(version, "COMM", std::string("\0engiTunes\0no", 14)));
    b.Add(Frame(version, "COMM", std::string("\0eng\0loud", 9)));
    b.Add(Frame(version, "TRCK", "\7x"));
    return b.Add(Frame(version, "TCOM", ""));
  };
  for (const unsigned version : {3u, 4u}) {
    const auto result = ReadWith(kId3Reader, File(version, frames(version)));
    EXPECT_TRUE(result.output.hasNative);
    EXPECT_EQ(sorvik_test::TextFacts(result),
              "title=T\xC3\xA9\nartist=Andr\xC3\xA9\nalbum=\xC3\xA9\ngenre=G\nlogComment=loud\n");
  }
  EXPECT_FALSE(ReadWith(kId3Reader, File(3, Frame(3, "TXXX", "x"))).output.hasNative);
}

TEST(Id3Reader, UndoesUnsynchronisation) {
  const std::string stored = Private(std::string("<p>\xFF\0\xE0</p>", 10));
  for (const auto& [version, tag, frame] : {std::tuple(3u, 0x80u, 0u), std::tuple(4u, 0u, 2u)}) {
    EXPECT_EQ(ReadWith(kId3Reader, File(version, Frame(version, "PRIV", stored, frame), tag))
                  .output.packet,
              "<p>\xFF\xE0</p>");
  }
}

TEST(Id3Reader, SkipsTheExtendedHeader) {
  const Bytes frame = Frame(3, "PRIV", Private("<p/>"));
  const Bytes extended = Bytes().U32(6).Fill(6).Add(frame);
  EXPECT_EQ(ReadWith(kId3Reader, File(3, extended, 0x40)).output.packet, "<p/>");
  const Bytes inclusive = Bytes().Add(Synchsafe(6)).Fill(2).Add(Frame(4, "PRIV", Private("<p/>")));
  EXPECT_EQ(ReadWith(kId3Reader, File(4, inclusive, 0x40)).output.packet, "<p/>");
  EXPECT_EQ(ReadWith(kId3Reader, File(2, frame)).output.packet, "") << "ID3v2.2 has no PRIV";
  sorvik_test::ReadDamaged(kId3Reader, File(4, inclusive, 0x40));
}

}  // namespace
