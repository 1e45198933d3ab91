// SPDX-License-Identifier: MIT
#include "xmp/readers/IsoMakers.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "xmp/Namespaces.h"
#include "xmp/readers/ExifTags.h"
#include "xmp/readers/GpmfTelemetry.h"
#include "xmp/readers/NativeText.h"
#include "xmp/readers/NonRealTimeMetaReader.h"
#include "xmp/readers/PictureSize.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

constexpr std::uint64_t kMaxBlockBytes = std::uint64_t{1} << 20;

// Contains Exif blocks for the first, the Exif and the GPS directory.
constexpr std::string_view kCanonUUID{
    "\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48", 16};

std::string CopyOf(FileWindow& file, const IsoBox& box) {
  return std::string(file.At(box.body, std::min(kMaxBlockBytes, box.Size())).Text());
}

// The facts of a camera replace those of the movie header.
void Replace(const TXMPMeta& facts, TXMPMeta& meta) {
  TXMPMeta merged = facts;
  merged.FillFrom(meta);
  meta = std::move(merged);
}

void SetCanonBlocks(FileWindow& file, const IsoBox& uuid, TXMPMeta& meta) {
  TXMPMeta facts;
  IsoBoxes boxes(file, uuid, kCanonUUID.size());
  while (const auto box = boxes.Next()) {
    if (box->type >> 8 != FourCC("CMT")) continue;
    const std::string block = CopyOf(file, *box);
    const ByteReader bytes = foundation::ReaderOf(block);
    if (box->type == FourCC("CMT1")) SetExifBlock(bytes, facts);
    if (box->type == FourCC("CMT2")) SetExifBlock(bytes, facts, ExifPart::kExif);
    if (box->type == FourCC("CMT4")) SetExifBlock(bytes, facts, ExifPart::kGPS);
  }
  Replace(facts, meta);
}

// The thumbnail of a movie is a JPEG with Exif: its first segment after the start of the picture.
void SetThumbnailExif(FileWindow& file, const IsoBox& box, TXMPMeta& meta) {
  constexpr std::string_view kStart{"\xFF\xD8\xFF\xE1", 4};
  constexpr std::string_view kExif{"Exif\0\0", 6};
  const std::string bytes = CopyOf(file, box);
  for (std::size_t at = bytes.find(kStart); at != bytes.npos; at = bytes.find(kStart, at + 1)) {
    const ByteReader segment = foundation::ReaderOf(bytes).Clip(at + kStart.size());
    if (!segment.Matches(2, kExif)) continue;
    TXMPMeta facts;
    SetExifBlock(segment.Clip(2 + kExif.size(), segment.U16BE(0).value_or(0)), facts);
    return Replace(facts, meta);
  }
}

// Tags of a number, a format and a count each, then the values. Formats are those of TIFF.
void SetNikonTags(ByteReader tags, TXMPMeta& meta) {
  constexpr unsigned kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8};
  constexpr std::uint64_t kHeader = 8;
  std::uint64_t at = 0;
  while (tags.Holds(at, kHeader)) {
    const std::uint32_t tag = tags.U32BE(at).value_or(0);
    const unsigned format = tags.U16BE(at + 4).value_or(0);
    if (format >= std::size(kSizes)) return;
    const std::uint64_t size = std::uint64_t{kSizes[format]} * tags.U16BE(at + 6).value_or(0);
    const std::string text = NativeText(tags.TextAt(at + kHeader, size));
    at += kHeader + size;
    switch (tag) {
      case 0x01:
        meta.SetProperty(kNsTIFF, "Make", text);
        break;
      case 0x02:
        meta.SetProperty(kNsTIFF, "Model", text);
        break;
      case 0x03:
        SetSoftware(meta, text);
        break;
      case 0x12:
        if (const std::string date = ExifDate(text); !date.empty()) {
          meta.SetProperty(kNsXMP, "CreateDate", date);
        }
        break;
      case 0x110A431:
        meta.SetProperty(kNsAux, "SerialNumber", text);
        break;
      default:
        break;
    }
  }
}

// 3GPP TS 26.244, 8.2: version and flags, language, name, role, longitude, latitude, altitude. The
// numbers are signed, with 16 fractional bits.
void SetLocationBox(ByteReader body, TXMPMeta& meta) {
  constexpr std::uint64_t kName = 6;
  const std::string_view rest = body.Clip(kName).Text();
  const bool wide = rest.starts_with("\xFE\xFF") || rest.starts_with("\xFF\xFE");
  std::size_t end = 0;
  const std::size_t step = wide ? 2 : 1;
  while (end < rest.size() &&
         (rest[end] != 0 || (wide && end + 1 < rest.size() && rest[end + 1] != 0))) {
    end += step;
  }
  const std::string name = wide ? UTF16Text(rest.substr(0, std::min(end, rest.size())), true)
                                : NativeText(rest.substr(0, end));
  meta.SetProperty(kNsDM, "shotLocation", name);
  const ByteReader numbers = body.Clip(kName + end + step + 1);
  const auto longitude = numbers.U32BE(0);
  const auto latitude = numbers.U32BE(4);
  const auto altitude = numbers.U32BE(8);
  if (!longitude || !latitude || (*longitude == 0 && *latitude == 0)) return;
  const auto set = [&meta](const char* property, std::uint32_t value, const char* references) {
    const bool negative = (value & 0x80000000) != 0;
    const std::uint32_t size = negative ? ~value + 1 : value;
    SetGPSCoordinate(meta, property, {Rate{size, 65536}, Rate{0, 1}, Rate{0, 1}},
                     references[negative ? 1 : 0]);
  };
  set("GPSLatitude", *latitude, "NS");
  set("GPSLongitude", *longitude, "EW");
  if (!altitude || *altitude == 0) return;
  const bool below = (*altitude & 0x80000000) != 0;
  const std::uint32_t size = below ? ~*altitude + 1 : *altitude;
  meta.SetProperty(kNsEXIF, "GPSAltitude", std::to_string(size) + "/65536");
  meta.SetProperty(kNsEXIF, "GPSAltitudeRef", below ? "1" : "0");
}

void SetNikonBox(FileWindow& file, const IsoBox& box, TXMPMeta& meta) {
  const auto tags = FindBox(file, box, FourCC("NCTG"));
  if (!tags) return;
  const std::string bytes = CopyOf(file, *tags);
  SetNikonTags(foundation::ReaderOf(bytes), meta);
}

// The child of a Canon box; nullopt if it is another box.
std::optional<IsoBox> FindCanonBox(FileWindow& file, const IsoBox& uuid, std::uint32_t type) {
  if (uuid.type != FourCC("uuid") || file.At(uuid.body, kCanonUUID.size()).Text() != kCanonUUID) {
    return std::nullopt;
  }
  return FindBox(file, uuid, type, kCanonUUID.size());
}

}  // namespace

bool IsCanonStill(FileWindow& file, const IsoBox& uuid) {
  constexpr std::string_view kStill = "CanonCR3";
  const auto version = FindCanonBox(file, uuid, FourCC("CNCV"));
  return version && file.At(version->body, kStill.size()).Text() == kStill;
}

void SetCanonStillSize(FileWindow& file, const IsoBox& uuid, std::uint32_t width,
                       std::uint32_t height, TXMPMeta& meta) {
  const auto first = FindCanonBox(file, uuid, FourCC("CMT1"));
  const std::string block = first ? CopyOf(file, *first) : std::string();
  SetPictureSize(meta, width, height, ExifOrientation(foundation::ReaderOf(block)));
}

void SetMakerBox(FileWindow& file, const IsoBox& box, TXMPMeta& meta) {
  switch (box.type) {
    case FourCC("uuid"):
      if (file.At(box.body, kCanonUUID.size()).Text() == kCanonUUID) {
        SetCanonBlocks(file, box, meta);
      }
      break;
    case FourCC("CNTH"):
    case FourCC("PANA"):
      SetThumbnailExif(file, box, meta);
      break;
    case FourCC("NCDT"):
      SetNikonBox(file, box, meta);
      break;
    case FourCC("loci"):
      SetLocationBox(foundation::ReaderOf(CopyOf(file, box)), meta);
      break;
    case FourCC("FIRM"):
      SetSoftware(meta, NativeText(CopyOf(file, box)));
      meta.SetProperty(kNsTIFF, "Make", "GoPro");
      break;
    case FourCC("GPMF"): {
      const std::string bytes = CopyOf(file, box);
      SetGpmfFacts(foundation::ReaderOf(bytes), meta);
      meta.SetProperty(kNsTIFF, "Make", "GoPro");
      break;
    }
    default:
      break;
  }
}

bool SetNonRealTimeBox(FileWindow& file, const IsoBox& metaBox, TXMPMeta& meta) {
  const std::uint64_t skip = file.At(metaBox.body, 8).Matches(4, "hdlr") ? 0 : 4;
  if (metaBox.Size() < skip) return false;
  const auto handler = FindBox(file, metaBox, FourCC("hdlr"), skip);
  if (!handler || !file.At(handler->body, 12).Matches(8, "nrtm")) return false;
  const auto xml = FindBox(file, metaBox, FourCC("xml "), skip);
  if (!xml || xml->Size() < 4) return true;
  std::string text(file.At(xml->body + 4, std::min(kMaxBlockBytes, xml->Size() - 4)).Text());
  text.erase(text.find_last_not_of('\0') + 1);
  TXMPMeta document;
  if (ReadNonRealTimeMeta(text, document)) AddNonRealTimeFacts(std::move(document), meta);
  return true;
}

}  // namespace Sorvik::xmp
