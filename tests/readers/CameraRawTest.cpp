// SPDX-License-Identifier: MIT
// Raw files that aren't TIFF.
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "support/TiffBytes.h"
#include "xmp/readers/CrwReader.h"
#include "xmp/readers/RafReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::Facts;
using sorvik_test::ReadWith;
using sorvik_test::TiffBytes;

// A preview of 32 by 16 pixels.
Bytes Preview(const std::vector<sorvik_test::TiffEntry>& tags) {
  const std::string exif = TiffBytes().File(tags);
  Bytes jpeg;
  jpeg.Hex("FFD8 FFE1").U16(exif.size() + 8).Text(std::string("Exif\0\0", 6)).Text(exif);
  return jpeg.Hex("FFC0 0008 08 0010 0020 03 FFDA");
}

// Signature and model; offsets of preview and records.
std::string Raf(const Bytes& preview, const Bytes& records) {
  Bytes b;
  b.Text("FUJIFILMCCD-RAW 0201FF12").PadTo(28).Text("X-T1").PadTo(84);
  b.U32(200).U32(preview.size()).U32(200 + preview.size()).U32(records.size());
  return b.PadTo(200).Add(preview).Add(records).str();
}

TEST(RafReader, ReadsSizeAndPreview) {
  TiffBytes t;
  const Bytes records = Bytes()
                            .U32(2)
                            .U16(0x100)
                            .U16(4)
                            .U16(220)
                            .U16(320)  // the full sensor
                            .U16(0x111)
                            .U16(4)
                            .U16(200)
                            .U16(300);  // height, width
  const std::string turned = Raf(
      Preview({t.Ascii(271, "FUJIFILM"), t.Ascii(272, "X-T1 body"), t.Shorts(274, {8})}), records);
  const auto result = ReadWith(kRafReader, turned);
  EXPECT_TRUE(result.recognised);
  EXPECT_EQ(Facts(result), "Make=FUJIFILM\nModel=X-T1 body\nvideoFrameSize=200x300 pixel\n");
  EXPECT_LE(result.reads, 1);
  EXPECT_EQ(Facts(ReadWith(kRafReader, Raf(Bytes(), records))),
            "Model=X-T1\nvideoFrameSize=300x200 pixel\n");
  EXPECT_EQ(Facts(ReadWith(kRafReader, Raf(Preview({}), Bytes().U32(0)))),
            "Model=X-T1\nvideoFrameSize=32x16 pixel\n");
  sorvik_test::ReadDamaged(kRafReader, turned);
}

struct CrwEntry {
  unsigned tag;
  Bytes data;  // eight bytes for tags with the flag 0x4000
};

// A heap: data, directory, offset of the directory.
Bytes Heap(const std::vector<CrwEntry>& entries) {
  Bytes data;
  Bytes directory;
  directory.U16LE(entries.size());
  for (const CrwEntry& entry : entries) {
    directory.U16LE(entry.tag);
    if ((entry.tag & 0x4000) != 0) {
      directory.Add(entry.data);
    } else {
      directory.U32LE(entry.data.size()).U32LE(data.size());
      data.Add(entry.data);
    }
  }
  const std::size_t at = data.size();
  return data.Add(directory).U32LE(at);
}
std::string Crw(const Bytes& heap) {
  return Bytes().Text("II").U32LE(26).Text("HEAPCCDR").PadTo(26).Add(heap).str();
}

TEST(CrwReader, ReadsNestedHeaps) {
  const Bytes camera = Heap({{0x080A, Bytes(std::string("Canon\0Canon EOS 10D\0", 20))},
                             {0x0810, Bytes(std::string("An Owner\0\0", 10))},
                             {0x580B, Bytes().U32LE(420000123).Fill(4)}});
  const Bytes capture = Heap({{0x180E, Bytes().U32LE(1'047'310'245).Fill(8)},
                              {0x1810, Bytes().U32LE(3072).U32LE(2048).Fill(4).U32LE(90)}});
  const std::string file = Crw(
      Heap({{0x300A, Heap({{0x2807, camera}, {0x3002, capture}})}, {0x2005, Bytes().Fill(300)}}));
  const auto result = ReadWith(kCrwReader, file);
  EXPECT_TRUE(result.recognised);
  EXPECT_EQ(Facts(result),
            "CreateDate=2003-03-10T15:30:45\nMake=Canon\nModel=Canon EOS 10D\n"
            "SerialNumber=0420000123\nvideoFrameSize=2048x3072 pixel\n");
  EXPECT_EQ(result.Get(kNsAux, "OwnerName"), "An Owner");
  EXPECT_EQ(result.reads, 0);
  sorvik_test::ReadDamaged(kCrwReader, file);
  // A heap whose directory names itself as a heap.
  const Bytes cycle = Bytes().U16LE(1).U16LE(0x2800).U32LE(16).U32LE(0).U32LE(0);
  EXPECT_EQ(Facts(ReadWith(kCrwReader, Crw(cycle))), "");
}

}  // namespace
