// SPDX-License-Identifier: MIT
#include "xmp/readers/MakerNotes.h"

#include <cstdio>
#include <iterator>
#include <string_view>

#include "xmp/readers/ExifTags.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;
using foundation::ReaderOf;

// Notes with previews are longer, but their directory and texts are at the start.
constexpr std::uint64_t kMaxNoteBytes = 256 * 1024;

// A directory of notes and the structure that its offsets refer to.
struct Notes {
  TiffWalker& walker;
  const TiffDirectory& directory;
};

void ReadCanon(const Notes& notes, const std::string& model, MakerNoteFacts& facts) {
  constexpr std::uint16_t kOwner = 0x09;
  constexpr std::uint16_t kSerialNumber = 0x0C;
  constexpr std::uint16_t kLensModel = 0x95;
  const auto number = notes.walker.Number(notes.directory, kSerialNumber);
  facts.serialNumber = CanonSerialNumber(number.value_or(0) & 0xFFFF'FFFF, model);
  facts.owner = notes.walker.Text(notes.directory, kOwner);
  facts.lens = notes.walker.Text(notes.directory, kLensModel);
}

void ReadNikon(const Notes& notes, MakerNoteFacts& facts) {
  constexpr std::uint16_t kSerialNumber = 0x1D;
  constexpr std::uint16_t kSerialNumberOfCompacts = 0xA0;
  constexpr std::uint16_t kLens = 0x84;
  facts.serialNumber = notes.walker.Text(notes.directory, kSerialNumber);
  if (facts.serialNumber.empty()) {
    facts.serialNumber = notes.walker.Text(notes.directory, kSerialNumberOfCompacts);
  }
  // Compact cameras prefix it: "NO= 2000a1b2".
  constexpr std::string_view kPrefix = "NO= ";
  if (facts.serialNumber.starts_with(kPrefix)) facts.serialNumber.erase(0, kPrefix.size());
  facts.lens = LensText(notes.walker, notes.directory, kLens);
}

void ReadSony(const Notes& notes, MakerNoteFacts& facts) {
  constexpr std::uint16_t kSerialNumber = 0x2031;
  facts.serialNumber = notes.walker.Text(notes.directory, kSerialNumber);
}

void ReadOlympus(const Notes& notes, MakerNoteFacts& facts) {
  constexpr std::uint16_t kEquipment = 0x2010;
  constexpr std::uint16_t kSerialNumber = 0x101;
  constexpr std::uint16_t kLensSerialNumber = 0x202;
  constexpr std::uint16_t kLensModel = 0x203;
  const TiffDirectory equipment = notes.walker.Sub(notes.directory, kEquipment);
  facts.serialNumber = notes.walker.Text(equipment, kSerialNumber);
  facts.lensSerialNumber = notes.walker.Text(equipment, kLensSerialNumber);
  facts.lens = notes.walker.Text(equipment, kLensModel);
}

void ReadPanasonic(const Notes& notes, MakerNoteFacts& facts) {
  constexpr std::uint16_t kLensType = 0x51;
  constexpr std::uint16_t kLensSerialNumber = 0x52;
  facts.lens = notes.walker.Text(notes.directory, kLensType);
  facts.lensSerialNumber = notes.walker.Text(notes.directory, kLensSerialNumber);
  // Written without an interchangeable lens, or with one that has no electronics.
  if (facts.lens == "NO-LENS") facts.lens.clear();
}

void ReadPentax(const Notes& notes, MakerNoteFacts& facts) {
  constexpr std::uint16_t kSerialNumber = 0x229;
  facts.serialNumber = notes.walker.Text(notes.directory, kSerialNumber);
}

using Read = void (*)(const Notes& notes, MakerNoteFacts& facts);

// What the offsets in the notes count from, and where the byte order is given.
enum class Base {
  kFile,       // the TIFF header of the file, in its byte order
  kNote,       // the start of the notes; bytes at `order` give the byte order, else as the file
  kOwnHeader,  // a TIFF header at `directory`
};

struct Layout {
  std::string_view header;
  Base base;
  std::uint64_t directory;  // offset of the directory, or of the TIFF header
  std::uint64_t order;      // offset of "II" or "MM" (kNote)
  Read read;
};
constexpr Layout kLayouts[] = {
    {{"Nikon\0\2", 7}, Base::kOwnHeader, 10, 0, ReadNikon},
    {{"OLYMPUS\0", 8}, Base::kNote, 12, 8, ReadOlympus},
    {{"OM SYSTEM\0", 10}, Base::kNote, 16, 12, ReadOlympus},
    {{"OLYMP\0", 6}, Base::kFile, 8, 0, ReadOlympus},
    {{"Panasonic\0", 10}, Base::kFile, 12, 0, ReadPanasonic},
    {{"SONY ", 5}, Base::kFile, 12, 0, ReadSony},
    {{"PENTAX \0", 8}, Base::kNote, 10, 8, ReadPentax},
    {{"AOC\0", 4}, Base::kFile, 6, 0, ReadPentax},
};

// Returns the layout by the header of the notes; null if it is unknown.
const Layout* LayoutOf(std::string_view note) {
  for (const Layout& layout : kLayouts) {
    if (note.starts_with(layout.header)) return &layout;
  }
  return nullptr;
}

void ReadFrom(TiffWalker& walker, const TiffDirectory& directory, Read read,
              MakerNoteFacts& facts) {
  if (!directory.Empty()) read({walker, directory}, facts);
}

// `at` is the offset of the notes in the file.
void ReadLayout(const Layout& layout, const std::string& note, std::uint64_t at, TiffWalker& walker,
                MakerNoteFacts& facts) {
  if (layout.base == Base::kFile) {
    ReadFrom(walker, walker.Read(at + layout.directory), layout.read, facts);
    return;
  }
  const ByteReader bytes = ReaderOf(note);
  const bool own = layout.base == Base::kOwnHeader;
  FileWindow window(own ? bytes.Clip(layout.directory) : bytes);
  if (own) {
    auto inner = TiffWalker::Open(window);
    if (inner) ReadFrom(*inner, inner->First(), layout.read, facts);
    return;
  }
  const bool given = bytes.Matches(layout.order, "II") || bytes.Matches(layout.order, "MM");
  const bool bigEndian = given ? bytes.Matches(layout.order, "MM") : walker.BigEndian();
  auto inner = TiffWalker::WithoutHeader(window, bigEndian, layout.directory);
  ReadFrom(inner, inner.First(), layout.read, facts);
}

}  // namespace

std::string CanonSerialNumber(std::uint64_t number, const std::string& model) {
  if (number == 0) return {};
  char text[32];
  if (model == "Canon EOS D30") {
    std::snprintf(text, sizeof text, "%04x%05u", static_cast<unsigned>(number >> 16),
                  static_cast<unsigned>(number & 0xFFFF));
  } else {
    const int digits = model.starts_with("Canon EOS-1D") ? 6 : 10;
    std::snprintf(text, sizeof text, "%0*u", digits, static_cast<unsigned>(number));
  }
  return text;
}

MakerNoteFacts ReadMakerNote(TiffWalker& walker, const TiffDirectory& first,
                             const TiffDirectory& exif) {
  MakerNoteFacts facts;
  const TiffTag* tag = exif.Find(exif::kMakerNote);
  if (tag == nullptr) return facts;
  const std::string note = walker.Head(exif, exif::kMakerNote, kMaxNoteBytes);
  if (const Layout* layout = LayoutOf(note)) {
    ReadLayout(*layout, note, tag->offset, walker, facts);
  } else if (walker.Text(first, tiff::kMake) == "Canon") {
    // The notes of Canon have no header.
    const TiffDirectory directory = walker.Read(tag->offset);
    if (!directory.Empty()) {
      ReadCanon({walker, directory}, walker.Text(first, tiff::kModel), facts);
    }
  }
  return facts;
}

}  // namespace Sorvik::xmp
