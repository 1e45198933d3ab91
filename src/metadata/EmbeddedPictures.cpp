// SPDX-License-Identifier: MIT
#include "metadata/EmbeddedPictures.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "xmp/FileBytes.h"
#include "xmp/readers/FileWindow.h"
#include "xmp/readers/IsoBoxes.h"
#include "xmp/readers/JpegReader.h"
#include "xmp/readers/TiffWalker.h"

// Facts: TIFF 6.0; DNG 1.4 (previews in SubIFDs); Exif 2.32 (JPEGInterchangeFormat); ISO/IEC
// 14496-12. The boxes and tags of makers follow the tables that independent readers publish.
namespace Sorvik {
namespace {

using foundation::ByteReader;
using xmp::FileWindow;
using xmp::FourCC;
using xmp::IsoBox;
using xmp::IsoBoxes;
using xmp::TiffDirectory;
using xmp::TiffWalker;

constexpr std::size_t kMaxPictures = 3;
constexpr std::string_view kJpegStart = "\xFF\xD8\xFF";

class PictureSearch {
 public:
  explicit PictureSearch(const xmp::ReaderInput& input) : input_(input), file_(input) {}

  EmbeddedPictures Run() {
    if (input_.head.Matches(0, kJpegStart)) {
      xmp::ReaderOutput ignored;
      SetOrientation(xmp::ReadJpeg(input_, ignored).value_or(1));
    } else if (input_.head.Matches(0, "FUJIFILMCCD-RAW ")) {
      constexpr std::uint64_t kPreview = 84;
      AddJpeg(input_.head.U32BE(kPreview).value_or(0), input_.head.U32BE(kPreview + 4).value_or(0));
    } else if (auto tiff = TiffWalker::Open(file_)) {
      SearchTiff(*tiff);
    } else {
      SearchIso({0, 0, file_.Size()}, 0);
    }
    std::ranges::stable_sort(found_.pictures,
                             [](const auto& a, const auto& b) { return a.length > b.length; });
    if (found_.pictures.size() > kMaxPictures) found_.pictures.resize(kMaxPictures);
    return std::move(found_);
  }

 private:
  void SetOrientation(std::uint64_t orientation) {
    if (orientation >= 1 && orientation <= 8) found_.orientation = static_cast<int>(orientation);
  }

  void AddJpeg(std::uint64_t offset, std::uint64_t length) {
    if (offset >= file_.Size() || length < kJpegStart.size()) return;
    if (!file_.At(offset, kJpegStart.size()).Matches(0, kJpegStart)) return;
    found_.pictures.push_back({offset, std::min(length, file_.Size() - offset)});
  }

  void SearchTiff(TiffWalker& tiff) {
    constexpr std::uint16_t kOrientation = 0x0112;
    constexpr std::uint16_t kSubDirectories = 0x014A;
    constexpr std::uint16_t kRw2Jpeg = 0x002E;
    constexpr std::uint64_t kMaxSubDirectories = 8;
    const TiffDirectory first = tiff.First();
    SetOrientation(tiff.Number(first, kOrientation).value_or(1));
    AddDirectory(tiff, first);
    if (const auto* jpeg = first.Find(kRw2Jpeg)) AddJpeg(jpeg->offset, jpeg->count);
    for (std::uint64_t i = 0; i < kMaxSubDirectories; ++i) {
      const TiffDirectory directory = tiff.Sub(first, kSubDirectories, i);
      if (directory.Empty()) break;
      AddDirectory(tiff, directory);
    }
  }

  // A directory describes a JPEG by two tags of its own, or as a single strip or tile. The pixels
  // of raw pictures may be stored as lossless JPEG, which is no preview.
  void AddDirectory(TiffWalker& tiff, const TiffDirectory& directory) {
    constexpr std::uint16_t kCompression = 0x0103;
    constexpr std::uint16_t kPhotometric = 0x0106;
    constexpr std::uint64_t kOldJpeg = 6;
    constexpr std::uint64_t kJpeg = 7;
    constexpr std::uint64_t kColourFilterArray = 32803;
    constexpr std::uint64_t kLinearRaw = 34892;
    AddTags(tiff, directory, 0x0201, 0x0202);
    const auto compression = tiff.Number(directory, kCompression);
    const auto photometric = tiff.Number(directory, kPhotometric).value_or(0);
    if (compression != kOldJpeg && compression != kJpeg) return;
    if (photometric == kColourFilterArray || photometric == kLinearRaw) return;
    AddTags(tiff, directory, 0x0111, 0x0117);
    AddTags(tiff, directory, 0x0144, 0x0145);
  }

  void AddTags(TiffWalker& tiff, const TiffDirectory& directory, std::uint16_t offset,
               std::uint16_t length) {
    if (const auto* tag = directory.Find(offset); tag == nullptr || tag->count != 1) return;
    AddJpeg(tiff.Number(directory, offset).value_or(0), tiff.Number(directory, length).value_or(0));
  }

  // Containers on the way to pictures, and boxes that begin with a JPEG after a few bytes.
  void SearchIso(const IsoBox& parent, std::uint64_t skip, int depth = 0) {
    constexpr int kMaxDepth = 6;
    constexpr std::array kContainers = {FourCC("moov"), FourCC("udta"), FourCC("ilst"),
                                        FourCC("covr"), FourCC("CNTH"), FourCC("NCDT")};
    constexpr std::array kPictures = {FourCC("data"), FourCC("CNDA"), FourCC("THMB"),
                                      FourCC("PRVW"), FourCC("NCTH"), FourCC("NCVW"),
                                      FourCC("snal"), FourCC("tnal"), FourCC("thmb")};
    if (depth > kMaxDepth) return;
    IsoBoxes boxes(file_, parent, skip);
    while (const auto box = boxes.Next()) {
      if (std::ranges::find(kContainers, box->type) != kContainers.end()) {
        SearchIso(*box, 0, depth + 1);
      } else if (box->type == FourCC("meta")) {
        SearchIso(*box, SkipOfMeta(*box), depth + 1);
      } else if (box->type == FourCC("uuid")) {
        SearchUuid(*box, depth);
      } else if (std::ranges::find(kPictures, box->type) != kPictures.end()) {
        AddJpegOf(*box);
      }
    }
  }

  // In MP4 the box has a version in front of its boxes, in QuickTime it has none.
  std::uint64_t SkipOfMeta(const IsoBox& box) {
    constexpr std::uint64_t kVersion = 4;
    return file_.At(box.body, 8).Matches(4, "hdlr") ? 0 : kVersion;
  }

  void SearchUuid(const IsoBox& box, int depth) {
    constexpr std::string_view kCanon(
        "\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48", 16);
    constexpr std::string_view kPreview(
        "\xEA\xF4\x2B\x5E\x1C\x98\x4B\x88\xB9\xFB\xB7\xDC\x40\x6E\x4D\x16", 16);
    constexpr std::uint64_t kPreviewHeader = 8;
    const ByteReader id = file_.At(box.body, kCanon.size());
    if (id.Matches(0, kCanon)) SearchIso(box, kCanon.size(), depth + 1);
    if (id.Matches(0, kPreview)) SearchIso(box, kPreview.size() + kPreviewHeader, depth + 1);
  }

  void AddJpegOf(const IsoBox& box) {
    constexpr std::uint64_t kMaxHeader = 32;
    const std::string_view start = file_.At(box.body, std::min(kMaxHeader, box.Size())).Text();
    const std::size_t found = start.find(kJpegStart);
    if (found != start.npos) AddJpeg(box.body + found, box.Size() - found);
  }

  const xmp::ReaderInput& input_;
  FileWindow file_;
  EmbeddedPictures found_;
};

}  // namespace

EmbeddedPictures FindEmbeddedPictures(const xmp::ReaderInput& input) {
  return PictureSearch(input).Run();
}

EmbeddedPictures FindEmbeddedPictures(const std::string& path) {
  const auto file = xmp::FileOnDisk::Open(path);
  if (!file) return {};
  return FindEmbeddedPictures({path, *file, file->Head()});
}

}  // namespace Sorvik
