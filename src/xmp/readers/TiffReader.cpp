// SPDX-License-Identifier: MIT
#include "xmp/readers/TiffReader.h"

#include <optional>
#include <string_view>

#include "xmp/NativeValues.h"
#include "xmp/readers/DngTags.h"
#include "xmp/readers/EmbeddedJpeg.h"
#include "xmp/readers/ExifTags.h"
#include "xmp/readers/FileWindow.h"
#include "xmp/readers/ImageResources.h"
#include "xmp/readers/IptcRecords.h"
#include "xmp/readers/PictureSize.h"

namespace Sorvik::xmp {

namespace {

using foundation::ReaderOf;

// Tags of the first directory of Panasonic's RW2, from the tables that independent readers publish.
constexpr std::uint16_t kTopBorder = 4;
constexpr std::uint16_t kLeftBorder = 5;
constexpr std::uint16_t kBottomBorder = 6;
constexpr std::uint16_t kRightBorder = 7;
constexpr std::uint16_t kPreviewJpeg = 0x2E;

bool IsRw2(const ReaderInput& input) { return input.head.Matches(0, std::string_view("IIU\0", 4)); }
// The first directory of Canon's CR2 is that of a preview.
bool IsCr2(const ReaderInput& input) { return input.head.Matches(8, "CR"); }

class TiffFile {
 public:
  TiffFile(const ReaderInput& input, TiffWalker& walker, ReaderOutput& output)
      : input_(input), walker_(walker), first_(walker.First()), output_(output) {}

  void Read() {
    output_.packet = walker_.Bytes(first_, tiff::kXMPPacket, FileWindow::kMaxBytes);
    output_.hasNative = SetExifTags(walker_, first_, output_.native);
    StoreIptc();
    if (IsDng(first_)) {
      SetDngTags(walker_, first_, output_.native);
      output_.hasNative = true;
      return;
    }
    StoreSize();
    const TiffTag* preview = first_.Find(kPreviewJpeg);
    if (IsRw2(input_) && preview != nullptr) {
      AddEmbeddedJpeg(input_.file, preview->offset, preview->count, output_);
    }
  }

 private:
  void StoreIptc() {
    constexpr std::uint64_t kMaxIptcBytes = std::uint64_t{1} << 20;
    const std::string iptc = walker_.Head(first_, tiff::kIptc, kMaxIptcBytes);
    output_.hasNative |= SetIptcRecords(ReaderOf(iptc), output_.native);
    const std::string resources =
        walker_.Head(first_, tiff::kImageResources, FileWindow::kMaxBytes);
    ReadImageResources(ReaderOf(resources), output_);
  }

  void StoreSize() {
    if (!SetBorders() && (IsCr2(input_) || !SetSize(MainDirectory(walker_, first_)))) {
      const TiffDirectory exif = walker_.Sub(first_, tiff::kExifIFD);
      Set(walker_.Number(exif, exif::kPixelXDimension),
          walker_.Number(exif, exif::kPixelYDimension));
    }
  }

  bool SetSize(const TiffDirectory& directory) {
    const bool set = Set(walker_.Number(directory, tiff::kImageWidth),
                         walker_.Number(directory, tiff::kImageLength));
    const auto bits = walker_.Number(directory, tiff::kBitsPerSample);
    constexpr std::uint64_t kMaxBits = 64;
    if (set && bits && *bits <= kMaxBits) {
      SetPixelDepth(output_.native, static_cast<unsigned>(*bits));
    }
    return set;
  }

  bool SetBorders() {
    if (!IsRw2(input_)) return false;
    const std::uint64_t left = walker_.Number(first_, kLeftBorder).value_or(0);
    const std::uint64_t right = walker_.Number(first_, kRightBorder).value_or(0);
    const std::uint64_t top = walker_.Number(first_, kTopBorder).value_or(0);
    const std::uint64_t bottom = walker_.Number(first_, kBottomBorder).value_or(0);
    return left < right && top < bottom && Set(right - left, bottom - top);
  }

  bool Set(std::optional<std::uint64_t> width, std::optional<std::uint64_t> height) {
    if (width.value_or(0) == 0 || height.value_or(0) == 0) return false;
    SetPictureSize(output_.native, *width, *height, walker_.Number(first_, tiff::kOrientation));
    output_.hasNative = true;
    return true;
  }

  const ReaderInput& input_;
  TiffWalker& walker_;
  const TiffDirectory first_;
  ReaderOutput& output_;
};

bool Recognises(const ReaderInput& input) { return TiffWalker::IsTiff(input.head); }

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  FileWindow file(input);
  auto walker = TiffWalker::Open(file);
  if (walker) TiffFile(input, *walker, output).Read();
}

}  // namespace

const Reader kTiffReader = {"TIFF", Recognises, Read};

}  // namespace Sorvik::xmp
