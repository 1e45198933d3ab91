// SPDX-License-Identifier: MIT
#include "support/MadeMedia.h"

#include <algorithm>
#include <cctype>

#include "support/Bytes.h"

namespace sorvik_test {
namespace {

// Key, BER length of four bytes, and the value.
Bytes Klv(std::string_view key, const Bytes& value) {
  Bytes item;
  item.Hex(key).U8(0x83).U24(value.size()).Add(value);
  return item;
}

Bytes PartitionPack(std::string_view kind, std::uint64_t self, std::uint64_t footer) {
  Bytes value;
  value.U16(1).U16(3).U32(1).U64(self).U64(0).U64(footer).U64(0).U64(0).U32(0).U64(0).U32(0);
  value.Hex("060E2B34040101010D01020101010900").U32(0).U32(16);
  return Klv("060E2B34020501010D010201010" + std::string(kind) + "00", value);
}

std::string Mxf() {
  const Bytes essence = Klv("060E2B34010201010D01030115010500", Bytes().Fill(400, 0x55));
  const std::uint64_t footer = PartitionPack("204", 0, 0).size() + essence.size();
  Bytes index;
  index.U32(0).U64(0).U32(0).U64(footer).U32(45);
  return PartitionPack("204", 0, footer)
      .Add(essence)
      .Add(PartitionPack("404", footer, footer))
      .Add(Klv("060E2B34020501010D01020101110100", index))
      .str();
}

Bytes Box(std::string_view type, const Bytes& body) {
  return Bytes().U32(8 + body.size()).Text(type).Add(body);
}

std::string Mp4() {
  const Bytes type = Box("ftyp", Bytes().Text("mp42").U32(0).Text("mp42"));
  const Bytes offsets = Box("stco", Bytes().U32(0).U32(1).U32(type.size() + 8));
  const Bytes movie = Box("moov", Box("trak", Box("mdia", Box("minf", Box("stbl", offsets)))));
  return Bytes(type).Add(Box("mdat", Bytes().Fill(300, 0x55))).Add(movie).str();
}

std::string Packets(std::size_t prefix) {
  Bytes stream;
  for (int i = 0; i < 8; ++i) stream.Fill(prefix).Hex("471FFF10").Fill(184, 0xFF);
  return stream.str();
}

std::string Wav() {
  const Bytes format = Bytes().U16LE(1).U16LE(1).U32LE(48000).U32LE(96000).U16LE(2).U16LE(16);
  return Bytes()
      .Text("RIFF")
      .U32LE(4 + 8 + 16 + 8 + 200)
      .Text("WAVEfmt ")
      .U32LE(16)
      .Add(format)
      .Text("data")
      .U32LE(200)
      .Fill(200)
      .str();
}

std::string Avi() {
  return Bytes().Text("RIFF").U32LE(4 + 8 + 100).Text("AVI LIST").U32LE(100).Fill(100).str();
}

std::string Ari() {
  Bytes frame;
  frame.Text("ARRI").Hex("12345678").U32LE(4096).U32LE(3).U32LE(60).U32LE(16).U32LE(8);
  return frame.PadTo(4096).Fill(16 * 8 * 12 / 8, 0x55).str();
}

std::string Rmf() {
  Bytes frame = Bytes().Text("XPDS").PadTo(0x829).U16LE(6).U16LE(9);
  return frame.PadTo(0x10000).Fill(9 * 6 / 3 * 4, 0x55).str();
}

std::string Dng() {
  Bytes file;
  file.Text("II").U16LE(42).U32LE(8).U16LE(3);
  const auto entry = [&file](unsigned tag, unsigned type, unsigned count, unsigned value) {
    file.U16LE(tag).U16LE(type).U32LE(count).U32LE(value);
  };
  entry(273, 4, 1, 64);
  entry(279, 4, 1, 100);
  entry(51044, 10, 1, 56);
  file.U32LE(0).PadTo(56).U32LE(24).U32LE(1);
  return file.PadTo(64).Fill(100, 0x55).str();
}

// A gray picture of 8x8 pixels: each of its Huffman tables has one code.
std::string Jpeg() {
  Bytes picture = Bytes().Hex("FFD8 FFDB0043 00").Fill(64, 1);
  picture.Hex("FFC0000B080008000801011100");
  for (const unsigned table : {0x00U, 0x10U}) {
    picture.Hex("FFC40014").U8(table).U8(1).Fill(15).U8(0);
  }
  return picture.Hex("FFDA0008010100003F00 3F FFD9").str();
}

std::string R3d() {
  Bytes file;
  file.U32(324).Text("RED1").PadTo(324).U32(100).Text("REDV").PadTo(424);
  return file.U32(56).Text("REOB").PadTo(480).str();
}

}  // namespace

std::string MadeMedia(std::string_view name) {
  std::string extension(name.substr(std::min(name.rfind('.'), name.size())));
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  struct Row {
    std::string_view extension;
    std::string (*make)();
  };
  static constexpr Row kRows[] = {{".mxf", Mxf},
                                  {".mp4", Mp4},
                                  {".mov", Mp4},
                                  {".wav", Wav},
                                  {".avi", Avi},
                                  {".ari", Ari},
                                  {".rmf", Rmf},
                                  {".dng", Dng},
                                  {".r3d", R3d},
                                  {".jpg", Jpeg},
                                  {".jpeg", Jpeg},
                                  {".thm", Jpeg},
                                  {".crm", Mp4},
                                  {".mts", [] { return Packets(4); }},
                                  {".m2ts", [] { return Packets(4); }},
                                  {".m2t", [] { return Packets(0); }}};
  for (const Row& row : kRows) {
    if (row.extension == extension) return row.make();
  }
  return "essence";
}

}  // namespace sorvik_test
