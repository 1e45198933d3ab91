// SPDX-License-Identifier: MIT
#include "xmp/readers/DngTags.h"

#include <array>

#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/ExifTags.h"
#include "xmp/readers/NativeText.h"
#include "xmp/readers/PictureSize.h"

namespace Sorvik::xmp {

namespace {

using foundation::ReaderOf;

// First directory.
constexpr std::uint16_t kDNGVersion = 50706;
constexpr std::uint16_t kUniqueCameraModel = 50708;
constexpr std::uint16_t kAsShotNeutral = 50728;
constexpr std::uint16_t kAsShotWhiteXY = 50729;
constexpr std::uint16_t kCameraSerialNumber = 50735;
constexpr std::uint16_t kTimeCodes = 51043;
constexpr std::uint16_t kFrameRate = 51044;
constexpr std::uint16_t kReelName = 51081;
constexpr std::uint16_t kCameraLabel = 51105;

// Directory of the raw picture.
constexpr std::uint16_t kDefaultScale = 50718;
constexpr std::uint16_t kDefaultCropSize = 50720;
constexpr std::uint16_t kActiveArea = 50829;

std::uint32_t Pixels(const std::optional<std::uint64_t>& value) {
  return value && *value <= 0xFFFF'FFFF ? static_cast<std::uint32_t>(*value) : 0;
}

// The crop to be shown, otherwise the active area of the sensor, otherwise the stored size.
// `orientation` is that of a photograph.
void SetSize(TiffWalker& walker, const TiffDirectory& raw, std::optional<std::uint64_t> orientation,
             TXMPMeta& meta) {
  SetPictureSize(meta, Pixels(walker.Number(raw, tiff::kImageWidth)),
                 Pixels(walker.Number(raw, tiff::kImageLength)), orientation);
  std::array<std::uint32_t, 4> area = {};  // top, left, bottom, right
  for (std::uint64_t i = 0; i < area.size(); ++i)
    area[i] = Pixels(walker.Number(raw, kActiveArea, i));
  if (area[2] > area[0] && area[3] > area[1]) {
    SetPictureSize(meta, area[3] - area[1], area[2] - area[0], orientation);
  }
  SetPictureSize(meta, Pixels(walker.Number(raw, kDefaultCropSize, 0)),
                 Pixels(walker.Number(raw, kDefaultCropSize, 1)), orientation);
}

void SetScale(TiffWalker& walker, const TiffDirectory& raw, TXMPMeta& meta) {
  const auto h = walker.Ratio(raw, kDefaultScale, 0);
  const auto v = walker.Ratio(raw, kDefaultScale, 1);
  if (!h || !v || h->negative || v->negative) return;
  SetPixelAspectRatio(meta, std::uint64_t{h->num} * v->den, std::uint64_t{h->den} * v->num);
}

const char* CompressionName(std::uint64_t compression) {
  switch (compression) {
    case 1:
      return "Uncompressed";
    case 7:
      return "Lossless JPEG";
    case 8:
      return "Deflate";
    case 34892:
      return "Lossy JPEG";
    default:
      return "";
  }
}

// The first eight bytes of a time code are those of SMPTE ST 12-1; the others are user bits.
void SetTimecode(TiffWalker& walker, const TiffDirectory& first, Rate rate, TXMPMeta& meta) {
  constexpr std::uint64_t kMaxBytes = 80;  // ten time codes
  const std::string bytes = walker.Bytes(first, kTimeCodes, kMaxBytes);
  const auto code = ReaderOf(bytes).ViewAt<4>(0);
  if (!code) return;
  const auto timecode = TimecodeFromBCD({(*code)[0], (*code)[1], (*code)[2], (*code)[3]});
  if (timecode) SetStartTimecode(meta, *timecode, rate);
}

// "Canon EOS 5D" already includes the maker's name.
std::string FullModel(const std::string& make, const std::string& model) {
  if (make.empty() || model.empty() || model.starts_with(make)) return model;
  return make + " " + model;
}

void SetCamera(TiffWalker& walker, const TiffDirectory& first, TXMPMeta& meta) {
  std::string model = walker.Text(first, tiff::kModel);
  if (model.empty()) {
    model = walker.Text(first, kUniqueCameraModel);
    meta.SetProperty(kNsTIFF, "Model", model);
  }
  meta.SetProperty(kNsDM, "cameraModel", FullModel(walker.Text(first, tiff::kMake), model));
  meta.SetProperty(kNsDM, "camera", walker.Text(first, kCameraLabel));
  meta.SetProperty(kNsDM, "tapeName", walker.Text(first, kReelName));
  meta.SetProperty(kNsAux, "SerialNumber", walker.Text(first, kCameraSerialNumber));
  if (first.Find(kAsShotNeutral) != nullptr || first.Find(kAsShotWhiteXY) != nullptr) {
    meta.SetProperty(kNsCRS, "WhiteBalance", "As Shot");
  }
}

}  // namespace

bool IsDng(const TiffDirectory& first) noexcept { return first.Find(kDNGVersion) != nullptr; }

void SetDngTags(TiffWalker& walker, const TiffDirectory& first, TXMPMeta& meta) {
  SetCamera(walker, first, meta);
  const auto ratio = walker.Ratio(first, kFrameRate);
  const Rate rate = ratio && !ratio->negative ? Rate{ratio->num, ratio->den} : Rate();
  SetFrameRate(meta, rate);
  SetTimecode(walker, first, rate, meta);
  if (!meta.HasProperty(kNsXMP, "CreateDate")) {
    // Cameras that write no Exif directory store the time of recording here.
    meta.SetProperty(kNsXMP, "CreateDate", ExifDate(walker.Text(first, tiff::kDateTime)));
  }
  const TiffDirectory raw = MainDirectory(walker, first);
  // Frames of a sequence are shown as they are stored.
  const bool frame = rate.Known() || first.Find(kTimeCodes) != nullptr;
  SetSize(walker, raw, frame ? std::nullopt : walker.Number(first, tiff::kOrientation), meta);
  SetScale(walker, raw, meta);
  if (const auto bits = walker.Number(raw, tiff::kBitsPerSample)) {
    SetPixelDepth(meta, static_cast<unsigned>(*bits & 0xFF));
  }
  meta.SetProperty(kNsDM, "videoCompressor",
                   CompressionName(walker.Number(raw, tiff::kCompression).value_or(0)));
}

}  // namespace Sorvik::xmp
