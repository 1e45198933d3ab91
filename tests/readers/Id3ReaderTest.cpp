// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "xmp/Namespaces.h"
#include "xmp/readers/FlacReader.h"
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
    EXPECT_EQ(result.reads, 2) << "the packet, and what follows it with the first audio frame";
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
  EXPECT_EQ(sorvik_test::TextFacts(ReadWith(kId3Reader, File(3, Frame(3, "TXXX", "x")))), "");
}

// "rate channels duration".
std::string AudioOf(const std::string& file) {
  const auto result = ReadWith(kId3Reader, file, "a.mp3");
  return result.Get(kNsDM, "audioSampleRate") + " " + result.Get(kNsDM, "audioChannelType") + " " +
         result.Field("duration", kNsDM, "value") + "@" + result.Field("duration", kNsDM, "scale");
}

TEST(Id3Reader, ReadsTheFactsOfTheAudio) {
  // 128 kbit/s at 44.1 kHz, with and without a tag; MPEG-2 with 32 kbit/s at 24 kHz.
  const std::string constant = Bytes().Hex("FFFB9064").Fill(31996).str();
  EXPECT_EQ(AudioOf(constant), "44100 Stereo 88200@1/44100");
  EXPECT_EQ(AudioOf(std::string("ID3\4\0\0\0\0\0\0", 10) + constant), "44100 Stereo 88200@1/44100");
  EXPECT_EQ(AudioOf(Bytes().Hex("FFF344C4").Fill(3996).str()), "24000 Mono 24000@1/24000");
  // By the number of frames.
  const Bytes encoder = Bytes().Text("Xing").U32(1).U32(100).Fill(100);
  EXPECT_EQ(AudioOf(Bytes().Hex("FFFB9064").Fill(32).Add(encoder).str()),
            "44100 Stereo 115200@1/44100");
  EXPECT_EQ(AudioOf(Bytes().Hex("FFF344C4").Fill(9).Add(encoder).str()),
            "24000 Mono 57600@1/24000");
  EXPECT_EQ(AudioOf(Bytes().Hex("FFFBFC64").Fill(100).str()), "  @") << "an invalid code";
  EXPECT_FALSE(ReadWith(kId3Reader, constant, "a.bin").recognised);
}

TEST(FlacReader, ReadsTheFirstBlock) {
  Bytes file = Bytes().Text("fLaC").U8(0).U24(34).U16(4096).U16(4096).U24(0).U24(0);
  // 96 kHz, 6 channels, 24 bits, 2^32 + 1 samples.
  file.Hex("17700B71").U32(1).Fill(16);
  const auto result = ReadWith(kFlacReader, file.str());
  EXPECT_EQ(result.Get(kNsDM, "audioSampleRate"), "96000");
  EXPECT_EQ(result.Get(kNsDM, "audioChannelType"), "5.1");
  EXPECT_EQ(result.Get(kNsDM, "audioSampleType"), "24Int");
  EXPECT_EQ(result.Get(kNsDM, "audioCompressor"), "FLAC");
  EXPECT_EQ(result.Field("duration", kNsDM, "value"), "4294967297");
  sorvik_test::ReadDamaged(kFlacReader, file.str());
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
