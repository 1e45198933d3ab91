// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "xmp/Namespaces.h"
#include "xmp/PacketScan.h"
#include "xmp/XMPMeta.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::ReadSample;

std::string Packet(const std::string& label, const std::string& mark = "\xEF\xBB\xBF") {
  return "<?xpacket begin='" + mark +
         "'?><r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><r:Description "
         "xmlns:x='http://ns.adobe.com/xap/1.0/' x:Label='" +
         label + "'/></r:RDF>  <?xpacket end='w'?>";
}

// ASCII in UTF-16 or UTF-32; U+FEFF is written for the byte 0xFE.
std::string Widen(const std::string& text, std::size_t width, bool bigEndian) {
  std::string wide;
  for (const char c : text) {
    std::string unit(width, '\0');
    const auto at = [&](std::size_t byte) -> char& {
      return unit[bigEndian ? width - 1 - byte : byte];
    };
    at(0) = c == '\xFE' ? '\xFF' : c;
    if (c == '\xFE') at(1) = '\xFE';
    wide += unit;
  }
  return wide;
}

std::string LabelOf(std::string_view packet) {
  TXMPMeta meta;
  std::string label = "<none>";
  if (packet.empty()) return label;
  meta.ParseFromBuffer(packet.data(), static_cast<std::uint32_t>(packet.size()));
  meta.GetProperty(kNsXMP, "Label", &label);
  return label;
}

std::string Scan(const std::string& bytes) { return ScanForPacket(sorvik_test::MemoryFile(bytes)); }

TEST(PacketScan, FindsTheLastCompletePacket) {
  const std::string noise("\0<?<?xpacket\0<\xFF<?xml <", 23);
  EXPECT_EQ(LabelOf(FindPacket(noise + Packet("a") + noise)), "a");
  EXPECT_EQ(LabelOf(FindPacket(Packet("a") + noise + Packet("b") + noise)), "b");
  // Truncated before a complete packet, and after it.
  EXPECT_EQ(LabelOf(FindPacket(Packet("a").substr(0, 60) + Packet("b"))), "b");
  EXPECT_EQ(LabelOf(FindPacket(Packet("a") + Packet("b").substr(0, 60))), "a");
  EXPECT_EQ(FindPacket(noise + "<?xpacket end='w'?>"), "");
  EXPECT_EQ(FindPacket("<?xpacket begin='' <?xpacket end='w' and no end at all"), "");
  EXPECT_EQ(FindPacket(""), "");
}

TEST(PacketScan, AcceptsATruncatedTrailer) {
  const std::string noise(100, '\xE9');
  const std::string complete = Packet("a\xC3\xA9");
  const std::size_t root = complete.find("</r:RDF>") + 8;
  for (const std::size_t size : {root, complete.find("end=") + 7, complete.size() - 1}) {
    const std::string truncated = complete.substr(0, size);
    EXPECT_EQ(LabelOf(FindPacket(truncated)), "a\xC3\xA9") << size;
    EXPECT_EQ(LabelOf(FindPacket(truncated + noise)), "a\xC3\xA9") << size;
    EXPECT_EQ(LabelOf(FindPacket(truncated + noise + Packet("b"))), "b") << size;
    for (const bool bigEndian : {false, true}) {
      const std::string wide =
          Widen(Packet("w", "\xFE").substr(0, Packet("w", "\xFE").size() - 1), 2, bigEndian);
      EXPECT_EQ(LabelOf(FindPacket("noise" + wide)), "w") << bigEndian;
    }
  }
  EXPECT_EQ(FindPacket(complete.substr(0, root - 1)), "");
}

TEST(PacketScan, FindsUTF16AndUTF32) {
  for (const std::size_t width : {2u, 4u}) {
    for (const bool bigEndian : {false, true}) {
      const std::string packet = Widen(Packet("w\xE9", "\xFE"), width, bigEndian);
      EXPECT_EQ(LabelOf(FindPacket("noise" + packet + "noise")), "w\xC3\xA9")
          << width << (bigEndian ? " big" : " little");
    }
  }
}

TEST(PacketScan, ReadsHeadAndTailOfLargeFiles) {
  const std::string gap(std::size_t{3} << 20, 'x');
  EXPECT_EQ(LabelOf(Scan(gap + Packet("small"))), "small");
  EXPECT_EQ(LabelOf(Scan(Packet("head") + gap + gap)), "head");
  EXPECT_EQ(LabelOf(Scan(gap + gap + Packet("tail"))), "tail");
  EXPECT_EQ(LabelOf(Scan(gap + Packet("middle") + gap)), "<none>");
}

TEST(PacketScan, FindsPacketsInFilesOfUnknownFormat) {
  for (const char* name : {"xmp/derived-exiftool-xmpDM.mov", "xmp/exiftool-RIFF.webp"}) {
    const auto bytes = ReadSample(name);
    if (!bytes) GTEST_SKIP() << "samples not found";
    EXPECT_NO_THROW(LabelOf(Scan(*bytes))) << name;
    EXPECT_NE(Scan(*bytes), "") << name;
  }
}

}  // namespace
