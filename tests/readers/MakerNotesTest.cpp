// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <functional>

#include "support/Bytes.h"
#include "support/ReadWith.h"
#include "support/TiffBytes.h"
#include "xmp/readers/TiffReader.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::Bytes;
using sorvik_test::ReadDamaged;
using sorvik_test::ReadWith;
using sorvik_test::TiffBytes;
using sorvik_test::TiffEntry;

constexpr std::uint16_t kMakerNote = 37500;

struct Camera {
  const char* make;
  const char* model;
};

// A TIFF file whose Exif directory has maker notes. `note` gets their offset in the file.
std::string FileWith(const TiffBytes& tiff, const Camera& camera,
                     const std::function<std::string(std::size_t)>& note,
                     std::vector<TiffEntry> exif = {}) {
  TiffBytes t = tiff;
  const auto build = [&](std::size_t at) {
    std::vector<TiffEntry> entries = exif;
    entries.push_back(t.Raw(kMakerNote, 7, note(at)));
    return t.File({t.Ascii(271, camera.make), t.Ascii(272, camera.model)}, {{34665, entries}});
  };
  // The note is the last value of the file; its length doesn't depend on the offset.
  const std::string draft = build(0);
  return build(draft.size() - note(0).size());
}

std::string Equipment(const std::string& file) {
  const auto result = ReadWith(kTiffReader, file);
  const auto aux = [&](const char* name) { return result.Get(kNsAux, name); };
  return aux("SerialNumber") + "|" + aux("Lens") + "|" + aux("LensSerialNumber") + "|" +
         aux("OwnerName");
}

TEST(MakerNotes, ReadsCanonNotes) {
  TiffBytes t(false);
  const auto note = [&](std::size_t at) {
    return t.DirectoryAt(
        {t.Ascii(0x09, "An Owner"), t.Long(0x0C, 1234567), t.Ascii(0x95, "EF24-105mm f/4L IS USM")},
        at);
  };
  EXPECT_EQ(Equipment(FileWith(t, {"Canon", "Canon EOS 5D"}, note)),
            "0001234567|EF24-105mm f/4L IS USM||An Owner");
  EXPECT_EQ(Equipment(FileWith(t, {"Canon", "Canon EOS-1D"}, note)),
            "1234567|EF24-105mm f/4L IS USM||An Owner");
  EXPECT_EQ(Equipment(FileWith(t, {"Canon", "Canon EOS D30"}, note)),
            "001254919|EF24-105mm f/4L IS USM||An Owner");
  // The tags of Exif take precedence; notes without a header are those of Canon only.
  EXPECT_EQ(Equipment(FileWith(t, {"Canon", "Canon EOS 5D"}, note,
                               {t.Ascii(42033, "Body"), t.Ascii(42036, "Lens")})),
            "Body|Lens||An Owner");
  EXPECT_EQ(Equipment(FileWith(t, {"Other", "M"}, note)), "|||");
}

TEST(MakerNotes, ReadsNikonNotesWithTheirOwnHeader) {
  TiffBytes t(false);
  TiffBytes inner(true);
  const auto note = [&](std::size_t) {
    const std::string tiff =
        inner.File({inner.Ascii(0x1D, "6012345"),
                    inner.Ratios(0x84, {{180, 10}, {55, 1}, {35, 10}, {56, 10}})});
    return std::string("Nikon\0\2\x10\0\0", 10) + tiff;
  };
  EXPECT_EQ(Equipment(FileWith(t, {"NIKON CORPORATION", "NIKON D90"}, note)),
            "6012345|18-55mm f/3.5-5.6||");
  const auto compact = [&](std::size_t) {
    return std::string("Nikon\0\2\x10\0\0", 10) +
           inner.File({inner.Ascii(0xA0, "NO= 2000a1b2"),
                       inner.Ratios(0x84, {{50, 1}, {50, 1}, {0, 0}, {0, 0}})});
  };
  EXPECT_EQ(Equipment(FileWith(t, {"NIKON", "E"}, compact)), "2000a1b2|50mm||");
}

TEST(MakerNotes, ReadsNotesAfterAHeader) {
  TiffBytes t(true);
  struct Case {
    std::string header;
    bool relative;  // offsets count from the start of the notes
    bool bigEndian;
    std::vector<TiffEntry> (*entries)(const TiffBytes&);
    const char* expected;
  };
  const Case kCases[] = {
      {std::string("Panasonic\0\0\0", 12), false, true,
       [](const TiffBytes& b) {
         return std::vector{b.Ascii(0x51, "LUMIX G 20"), b.Ascii(0x52, "XT1")};
       },
       "|LUMIX G 20|XT1|"},
      {std::string("SONY DSC \0\0\0", 12), false, true,
       [](const TiffBytes& b) { return std::vector{b.Ascii(0x2031, "00012345")}; }, "00012345|||"},
      {std::string("AOC\0MM", 6), false, true,
       [](const TiffBytes& b) { return std::vector{b.Ascii(0x229, "4512345")}; }, "4512345|||"},
      {std::string("PENTAX \0II", 10), true, false,
       [](const TiffBytes& b) { return std::vector{b.Ascii(0x229, "4512345")}; }, "4512345|||"},
  };
  for (const Case& test : kCases) {
    TiffBytes inner(test.bigEndian);
    const auto note = [&](std::size_t at) {
      const std::size_t base = test.relative ? 0 : at;
      return test.header + inner.DirectoryAt(test.entries(inner), base + test.header.size());
    };
    EXPECT_EQ(Equipment(FileWith(t, {"Maker", "M"}, note)), test.expected) << test.header;
  }
}

TEST(MakerNotes, ReadsTheEquipmentDirectoryOfOlympus) {
  TiffBytes t(true);
  TiffBytes inner(false);
  for (const std::string& header :
       {std::string("OLYMPUS\0II\x03\0", 12), std::string("OM SYSTEM\0\0\0II\x04\0", 16)}) {
    const auto note = [&](std::size_t) {
      constexpr std::size_t kDirectory = 2 + 12 + 4;
      const std::size_t sub = header.size() + kDirectory;
      return header +
             inner.DirectoryAt({inner.Long(0x2010, static_cast<std::uint32_t>(sub))},
                               header.size()) +
             inner.DirectoryAt({inner.Ascii(0x101, "BHP242330"), inner.Ascii(0x202, "ABC11"),
                                inner.Ascii(0x203, "OLYMPUS M.12mm F2.0")},
                               sub);
    };
    EXPECT_EQ(Equipment(FileWith(t, {"OLYMPUS", "E-M1"}, note)),
              "BHP242330|OLYMPUS M.12mm F2.0|ABC11|");
  }
}

TEST(MakerNotes, SurviveTruncationAndCorruption) {
  TiffBytes t(false);
  const auto nikon = [&](std::size_t) {
    return std::string("Nikon\0\2\x10\0\0", 10) + t.File({t.Ascii(0x1D, "6012345")});
  };
  ReadDamaged(kTiffReader, FileWith(t, {"NIKON", "D"}, nikon));
  const auto pentax = [&](std::size_t) {
    return std::string("PENTAX \0II", 10) + t.DirectoryAt({t.Ascii(0x229, "4512345")}, 10);
  };
  ReadDamaged(kTiffReader, FileWith(t, {"PENTAX", "K"}, pentax));
}

}  // namespace
