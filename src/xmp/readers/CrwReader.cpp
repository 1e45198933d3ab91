// SPDX-License-Identifier: MIT
#include "xmp/readers/CrwReader.h"

#include <algorithm>
#include <chrono>

#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/FileWindow.h"
#include "xmp/readers/MakerNotes.h"
#include "xmp/readers/NativeText.h"
#include "xmp/readers/PictureSize.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Facts: "CIFF, Specification on Image Data File", version 1.0; the tags of Canon from the tables
// that independent readers publish.
constexpr std::string_view kSignature = "HEAPCCDR";
constexpr std::uint16_t kTypeMask = 0x3800;
constexpr std::uint16_t kHeapType1 = 0x2800;
constexpr std::uint16_t kHeapType2 = 0x3000;
constexpr std::uint16_t kInEntry = 0x4000;  // the value is in the entry
constexpr std::uint16_t kIdMask = 0x3FFF;
constexpr std::uint64_t kEntryLength = 10;
// Cameras nest three heaps of a few dozen entries.
constexpr unsigned kMaxDepth = 4;
constexpr unsigned kMaxHeaps = 16;
constexpr unsigned kMaxEntries = 512;
constexpr std::uint64_t kMaxTextBytes = 256;

enum Tag : std::uint16_t {
  kMakeModel = 0x080A,
  kOwner = 0x0810,
  kSerialNumber = 0x180B,
  kCaptured = 0x180E,
  kImageInfo = 0x1810,
};

class CrwFile {
 public:
  explicit CrwFile(const ReaderInput& input)
      : file_(input), bigEndian_(input.head.Matches(0, "MM")) {}

  bool Read(TXMPMeta& meta) {
    ReadHeap(file_.At(2, 4).U32(0, bigEndian_).value_or(0), file_.Size(), 0);
    meta.SetProperty(kNsTIFF, "Make", make_);
    meta.SetProperty(kNsTIFF, "Model", model_);
    meta.SetProperty(kNsAux, "SerialNumber", CanonSerialNumber(serialNumber_, model_));
    meta.SetProperty(kNsAux, "OwnerName", owner_);
    meta.SetProperty(kNsXMP, "CreateDate", date_);
    meta.SetProperty(kNsEXIF, "DateTimeOriginal", date_);
    SetPictureSize(meta, width_, height_, orientation_);
    return !meta.Empty();
  }

 private:
  // A heap ends with the offset of its directory.
  void ReadHeap(std::uint64_t begin, std::uint64_t end, unsigned depth) {
    if (depth == kMaxDepth || ++heaps_ > kMaxHeaps || end < begin || end - begin < 6) return;
    const std::uint64_t directory = begin + file_.At(end - 4, 4).U32(0, bigEndian_).value_or(0);
    const unsigned count = file_.At(directory, 2).U16(0, bigEndian_).value_or(0);
    for (unsigned i = 0; i < count && i < kMaxEntries; ++i) {
      const std::uint64_t at = directory + 2 + i * kEntryLength;
      const ByteReader entry = file_.At(at, kEntryLength);
      const auto tag = entry.U16(0, bigEndian_);
      const auto size = entry.U32(2, bigEndian_);
      const auto offset = entry.U32(6, bigEndian_);
      if (!tag || !size || !offset) return;
      const std::uint16_t type = *tag & kTypeMask;
      if ((*tag & kInEntry) != 0) {
        Take(*tag & kIdMask, at + 2, kEntryLength - 2);
      } else if (*offset > end - begin || *size > end - begin - *offset) {
        continue;
      } else if (type == kHeapType1 || type == kHeapType2) {
        ReadHeap(begin + *offset, begin + *offset + *size, depth + 1);
      } else {
        Take(*tag & kIdMask, begin + *offset, *size);
      }
    }
  }

  void Take(unsigned tag, std::uint64_t at, std::uint64_t size) {
    if (tag == kMakeModel) {
      const std::string texts(file_.At(at, std::min(size, kMaxTextBytes)).Text());
      make_ = NativeText(texts);
      const std::size_t second = texts.find('\0');
      if (second != texts.npos) model_ = NativeText(std::string_view(texts).substr(second + 1));
    } else if (tag == kOwner) {
      owner_ = NativeText(file_.At(at, std::min(size, kMaxTextBytes)).Text());
    } else if (tag == kSerialNumber) {
      serialNumber_ = file_.At(at, 4).U32(0, bigEndian_).value_or(0);
    } else if (tag == kCaptured) {
      TakeDate(file_.At(at, 4).U32(0, bigEndian_).value_or(0));
    } else if (tag == kImageInfo) {
      TakeImageInfo(file_.At(at, 16));
    }
  }

  // Seconds since 1970 of the camera's clock, which has no time zone.
  void TakeDate(std::uint32_t seconds) {
    if (seconds == 0) return;
    const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day ymd(day);
    const auto clock = static_cast<unsigned>((time - day).count());
    DateTime date;
    date.year = static_cast<unsigned>(static_cast<int>(ymd.year()));
    date.month = static_cast<unsigned>(ymd.month());
    date.day = static_cast<unsigned>(ymd.day());
    date.hour = clock / 3600;
    date.minute = clock / 60 % 60;
    date.second = clock % 60;
    date_ = DateText(date);
  }

  // Width, height, pixel aspect ratio, rotation in degrees.
  void TakeImageInfo(ByteReader info) {
    width_ = info.U32(0, bigEndian_).value_or(0);
    height_ = info.U32(4, bigEndian_).value_or(0);
    constexpr std::uint32_t kRight = 90;
    constexpr std::uint32_t kLeft = 270;
    const std::uint32_t degrees = info.U32(12, bigEndian_).value_or(0);
    orientation_ = degrees == kRight || degrees == kLeft ? 6 : 1;
  }

  FileWindow file_;
  bool bigEndian_;
  unsigned heaps_ = 0;
  std::string make_;
  std::string model_;
  std::string owner_;
  std::string date_;
  std::uint32_t serialNumber_ = 0;
  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
  unsigned orientation_ = 1;
};

bool Recognises(const ReaderInput& input) {
  const bool order = input.head.Matches(0, "II") || input.head.Matches(0, "MM");
  return order && input.head.Matches(6, kSignature);
}

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (Recognises(input)) output.hasNative = CrwFile(input).Read(output.native);
}

}  // namespace

const Reader kCrwReader = {"CRW", Recognises, Read};

}  // namespace Sorvik::xmp
