// SPDX-License-Identifier: MIT
#include "xmp/readers/ExifTags.h"

#include "xmp/Namespaces.h"
#include "xmp/readers/MakerNotes.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Exif directory.
constexpr std::uint16_t kDateTimeOriginal = 36867;
constexpr std::uint16_t kDateTimeDigitized = 36868;
constexpr std::uint16_t kOffsetTime = 36880;  // then of Original, of Digitized
constexpr std::uint16_t kSubSecTime = 37520;  // then of Original, of Digitized
constexpr std::uint16_t kUserComment = 37510;
constexpr std::uint16_t kISO = 34855;
constexpr std::uint16_t kOwnerName = 42032;
constexpr std::uint16_t kBodySerialNumber = 42033;
constexpr std::uint16_t kLensSpecification = 42034;
constexpr std::uint16_t kLensModel = 42036;
constexpr std::uint16_t kLensSerialNumber = 42037;
struct RatioTag {
  std::uint16_t tag;
  const char* name;
};
constexpr RatioTag kExposure[] = {
    {33434, "ExposureTime"},
    {33437, "FNumber"},
    {37386, "FocalLength"},
};

// GPS directory.
constexpr std::uint16_t kLatitudeRef = 1;
constexpr std::uint16_t kLatitude = 2;
constexpr std::uint16_t kLongitudeRef = 3;
constexpr std::uint16_t kLongitude = 4;
constexpr std::uint16_t kAltitudeRef = 5;
constexpr std::uint16_t kAltitude = 6;
constexpr std::uint16_t kProcessingMethod = 27;

// Texts with a character set.
constexpr std::uint64_t kMaxTextBytes = 64 * 1024;

// "35" or "3.5": at most one decimal, or empty for an unknown value.
std::string OneDecimal(const TiffRatio& ratio) {
  if (ratio.num == 0 || ratio.den == 0 || ratio.negative) return {};
  const std::uint64_t tenths = (std::uint64_t{ratio.num} * 10 + ratio.den / 2) / ratio.den;
  std::string text = std::to_string(tenths / 10);
  if (tenths % 10 != 0) text += "." + std::to_string(tenths % 10);
  return text;
}

// ".123" from the digits of a SubSecTime tag; empty for zeros and for invalid text.
std::string SubSeconds(const std::string& digits) {
  if (digits.empty() || digits.size() > 9) return {};
  if (digits.find_first_not_of("0123456789") != std::string::npos) return {};
  const std::size_t last = digits.find_last_not_of('0');
  return last == std::string::npos ? std::string() : "." + digits.substr(0, last + 1);
}

// "+hh:mm" of an OffsetTime tag, or "Z"; empty for anything else.
std::string Zone(const std::string& text) {
  if (text == "Z") return text;
  if (text.size() != 6 || (text[0] != '+' && text[0] != '-') || text[3] != ':') return {};
  for (const std::size_t at : {1U, 2U, 4U, 5U}) {
    if (text[at] < '0' || text[at] > '9') return {};
  }
  return text;
}

class ExifStore {
 public:
  ExifStore(TiffWalker& walker, const TiffDirectory& first, TXMPMeta& meta)
      : walker_(walker), first_(first), meta_(meta) {}

  bool Store(ExifPart part) {
    if (part == ExifPart::kAll) {
      StoreTexts();
      StoreExif(walker_.Sub(first_, tiff::kExifIFD));
      StoreGPS(walker_.Sub(first_, tiff::kGPSIFD));
    } else if (part == ExifPart::kExif) {
      StoreExif(first_);
    } else {
      StoreGPS(first_);
    }
    return any_;
  }

 private:
  void StoreExif(const TiffDirectory& exif) {
    StoreDates(exif);
    Set(kNsAux, "SerialNumber", walker_.Text(exif, kBodySerialNumber));
    StoreEquipment(exif);
    for (const RatioTag& ratio : kExposure) StoreRatio(exif, ratio);
    const auto iso = walker_.Number(exif, kISO);
    if (iso.value_or(0) != 0 && !meta_.HasProperty(kNsEXIF, "ISOSpeedRatings")) {
      meta_.AppendArrayItem(kNsEXIF, "ISOSpeedRatings", ArrayForm::kSeq, std::to_string(*iso));
    }
    const std::string comment = CharsetText(walker_.Bytes(exif, kUserComment, kMaxTextBytes));
    if (comment.empty()) return;
    meta_.SetLocalizedText(kNsEXIF, "UserComment", "x-default", comment);
    Set(kNsDM, "comment", comment);
  }

  // Tags of Exif 2.3 first: the maker notes repeat some of them in forms of their own.
  void StoreEquipment(const TiffDirectory& exif) {
    Set(kNsAux, "OwnerName", walker_.Text(exif, kOwnerName));
    Set(kNsAux, "LensSerialNumber", walker_.Text(exif, kLensSerialNumber));
    const std::string model = walker_.Text(exif, kLensModel);
    Set(kNsAux, "Lens", model.empty() ? LensText(walker_, exif, kLensSpecification) : model);
    const MakerNoteFacts notes = ReadMakerNote(walker_, first_, exif);
    SetMissing("SerialNumber", notes.serialNumber);
    SetMissing("OwnerName", notes.owner);
    SetMissing("Lens", notes.lens);
    SetMissing("LensSerialNumber", notes.lensSerialNumber);
  }

  void SetMissing(std::string_view name, const std::string& value) {
    if (!meta_.HasProperty(kNsAux, name)) Set(kNsAux, name, value);
  }

  void StoreRatio(const TiffDirectory& exif, const RatioTag& tag) {
    const auto ratio = walker_.Ratio(exif, tag.tag);
    if (!ratio || ratio->num == 0 || ratio->den == 0 || ratio->negative) return;
    Set(kNsEXIF, tag.name, std::to_string(ratio->num) + "/" + std::to_string(ratio->den));
  }

  // The first eight bytes name the character set (Exif, 4.6.5 and 4.6.6).
  std::string CharsetText(const std::string& bytes) const {
    if (bytes.size() <= 8) return {};
    const std::string_view text = std::string_view(bytes).substr(8);
    if (bytes.starts_with("UNICODE")) return UTF16Text(text, walker_.BigEndian());
    return bytes.starts_with("JIS") ? std::string() : NativeText(text);
  }

  void Set(std::string_view schema, std::string_view name, const std::string& value) {
    if (value.empty()) return;
    meta_.SetProperty(schema, name, value);
    any_ = true;
  }

  void StoreTexts() {
    Set(kNsTIFF, "Make", walker_.Text(first_, tiff::kMake));
    Set(kNsTIFF, "Model", walker_.Text(first_, tiff::kModel));
    const std::string description = walker_.Text(first_, tiff::kImageDescription);
    if (!description.empty()) {
      meta_.SetLocalizedText(kNsDC, "description", "x-default", description);
      any_ = true;
    }
    if (const auto software = walker_.Text(first_, tiff::kSoftware); !software.empty()) {
      SetSoftware(meta_, software);
      any_ = true;
    }
    if (const auto artist = walker_.Text(first_, tiff::kArtist); !artist.empty()) {
      SetCreators(meta_, artist);
      any_ = true;
    }
    StoreCopyright();
  }

  // The photographer's and the editor's copyright are in one tag, separated by a NUL (Exif, 4.6.4).
  void StoreCopyright() {
    std::string bytes = walker_.Bytes(first_, tiff::kCopyright, 65536);
    const std::size_t second = bytes.find('\0');
    std::string text = NativeText(bytes);
    if (second != std::string::npos) {
      const std::string editor = NativeText(std::string_view(bytes).substr(second + 1));
      if (!text.empty() && !editor.empty()) text += "\n";
      text += editor;
    }
    if (text.empty()) return;
    SetCopyright(meta_, text);
    any_ = true;
  }

  // `kind` 0 is DateTime, 1 Original, 2 Digitized: the order of their SubSecTime and OffsetTime
  // tags.
  std::string Date(const TiffDirectory& exif, const std::string& raw, std::uint16_t kind) {
    std::string date = ExifDate(raw);
    if (date.empty()) return date;
    date += SubSeconds(walker_.Text(exif, static_cast<std::uint16_t>(kSubSecTime + kind)));
    date += Zone(walker_.Text(exif, static_cast<std::uint16_t>(kOffsetTime + kind)));
    return date;
  }

  void StoreDates(const TiffDirectory& exif) {
    Set(kNsXMP, "ModifyDate", Date(exif, walker_.Text(first_, tiff::kDateTime), 0));
    const std::string original = Date(exif, walker_.Text(exif, kDateTimeOriginal), 1);
    const std::string digitized = Date(exif, walker_.Text(exif, kDateTimeDigitized), 2);
    Set(kNsEXIF, "DateTimeOriginal", original);
    Set(kNsXMP, "CreateDate", digitized.empty() ? original : digitized);
  }

  void StoreCoordinate(const TiffDirectory& gps, const char* name, std::uint16_t tag,
                       std::uint16_t referenceTag) {
    const std::string reference = walker_.Text(gps, referenceTag);
    std::array<Rate, 3> parts;
    for (std::uint64_t i = 0; i < parts.size(); ++i) {
      const auto part = walker_.Ratio(gps, tag, i);
      if (!part || part->negative || (i == 0 && part->den == 0)) return;
      // Some devices write 0/0 for unknown minutes or seconds.
      parts[i] = part->den == 0 ? Rate{0, 1} : Rate{part->num, part->den};
    }
    if (reference.size() != 1) return;
    SetGPSCoordinate(meta_, name, parts, reference[0]);
    any_ = any_ || meta_.HasProperty(kNsEXIF, name);
  }

  void StoreGPS(const TiffDirectory& gps) {
    if (gps.Empty()) return;
    StoreCoordinate(gps, "GPSLatitude", kLatitude, kLatitudeRef);
    StoreCoordinate(gps, "GPSLongitude", kLongitude, kLongitudeRef);
    const auto altitude = walker_.Ratio(gps, kAltitude);
    if (altitude && altitude->den != 0 && !altitude->negative) {
      Set(kNsEXIF, "GPSAltitude",
          std::to_string(altitude->num) + "/" + std::to_string(altitude->den));
      const auto below = walker_.Number(gps, kAltitudeRef);
      if (below && *below <= 1) Set(kNsEXIF, "GPSAltitudeRef", std::to_string(*below));
    }
    Set(kNsEXIF, "GPSProcessingMethod",
        CharsetText(walker_.Bytes(gps, kProcessingMethod, kMaxTextBytes)));
  }

  TiffWalker& walker_;
  const TiffDirectory& first_;
  TXMPMeta& meta_;
  bool any_ = false;
};

}  // namespace

bool SetExifTags(TiffWalker& walker, const TiffDirectory& first, TXMPMeta& meta) {
  return ExifStore(walker, first, meta).Store(ExifPart::kAll);
}

bool SetExifBlock(ByteReader block, TXMPMeta& meta, ExifPart part) {
  FileWindow file(block);
  auto walker = TiffWalker::Open(file);
  if (!walker) return false;
  const TiffDirectory first = walker->First();
  return ExifStore(*walker, first, meta).Store(part);
}

TiffDirectory MainDirectory(TiffWalker& walker, const TiffDirectory& first) {
  constexpr std::uint64_t kMainPicture = 0;
  // Converters write one or two previews next to the raw image.
  constexpr std::uint64_t kMaxSubIFDs = 16;
  if (walker.Number(first, tiff::kSubfileType).value_or(kMainPicture) == kMainPicture) return first;
  for (std::uint64_t i = 0; i < kMaxSubIFDs; ++i) {
    TiffDirectory sub = walker.Sub(first, tiff::kSubIFDs, i);
    if (sub.Empty()) break;
    if (walker.Number(sub, tiff::kSubfileType) == kMainPicture) return sub;
  }
  return {};
}

std::optional<std::uint64_t> ExifOrientation(ByteReader block) {
  FileWindow file(block);
  auto walker = TiffWalker::Open(file);
  return walker ? walker->Number(walker->First(), tiff::kOrientation) : std::nullopt;
}

std::string LensText(TiffWalker& walker, const TiffDirectory& directory, std::uint16_t tag) {
  const auto value = [&](std::uint64_t index) {
    return OneDecimal(walker.Ratio(directory, tag, index).value_or(TiffRatio()));
  };
  const auto range = [](const std::string& from, const std::string& to) {
    return to.empty() || to == from ? from : from + "-" + to;
  };
  if (value(0).empty()) return {};
  const std::string aperture = range(value(2), value(3));
  const std::string focal = range(value(0), value(1)) + "mm";
  return aperture.empty() ? focal : focal + " f/" + aperture;
}

}  // namespace Sorvik::xmp
