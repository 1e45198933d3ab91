// SPDX-License-Identifier: MIT
#include "xmp/readers/BrawValues.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <optional>
#include <utility>
#include <vector>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "xmp/Namespaces.h"
#include "xmp/readers/BrawJson.h"
#include "xmp/readers/IsoTexts.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

constexpr std::size_t kMaxSidecarBytes = std::size_t{1} << 20;
constexpr std::uint64_t kMaxValueBytes = 1024;
constexpr std::size_t kMaxOtherText = 128;  // tables for colours are far longer

struct BrawName {
  std::string_view name;
  const char* schema;
  const char* property;
};
// Names stored as one text property; SetBrawValue handles the others.
constexpr BrawName kNames[] = {
    {"manufacturer", kNsTIFF, "Make"},
    {"camera_number", kNsDM, "camera"},
    {"clip_number", kNsDM, "shotName"},
    {"reel_name", kNsDM, "tapeName"},
    {"scene", kNsDM, "scene"},
    {"take", kNsDM, "takeNumber"},
    {"lens_type", kNsAux, "Lens"},
    {"white_balance_kelvin", kNsCRS, "Temperature"},
    {"white_balance_tint", kNsCRS, "Tint"},
};

bool IsTrue(std::string_view text) { return text == "true" || text == "1"; }

// "2021:04:19", or with the time.
void SetRecordedDate(const std::string& text, TXMPMeta& meta) {
  std::string date = ExifDate(text);
  if (date.empty() && text.size() == 10 && !ExifDate(text + " 00:00:00").empty()) {
    date = text;
    date[4] = date[7] = '-';
  }
  meta.SetProperty(kNsDM, "shotDate", date);
  meta.SetProperty(kNsXMP, "CreateDate", date);
}

// "50mm".
void SetFocalLength(std::string_view text, TXMPMeta& meta) {
  const Rate length = DecimalFraction(text.substr(0, text.find("mm")));
  if (!length.Known()) return;
  meta.SetProperty(kNsEXIF, "FocalLength",
                   std::to_string(length.num) + "/" + std::to_string(length.den));
}

void SetOther(std::string_view name, const std::string& text, TXMPMeta& meta) {
  const bool isName = !name.empty() && std::ranges::all_of(name, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
  });
  if (isName && text.size() <= kMaxOtherText) meta.SetProperty(kNsBlackmagicRAW, name, text);
}

template <class T>
std::optional<std::string> NumberText(T value) {
  char text[32];
  const auto [end, error] = std::to_chars(text, text + sizeof text, value);
  if (error != std::errc()) return std::nullopt;
  return std::string(text, end);
}

// A big-endian number of the value's size: 1, 2, 4 or 8 bytes.
std::optional<std::uint64_t> Unsigned(ByteReader value) {
  if (value.Empty() || !std::has_single_bit(value.Size()) || value.Size() > 8) return std::nullopt;
  std::uint64_t number = 0;
  for (std::uint64_t i = 0; i < value.Size(); ++i) number = number << 8 | value.U8(i).value_or(0);
  return number;
}

std::optional<std::string> SignedText(ByteReader value) {
  const auto number = Unsigned(value);
  if (!number) return std::nullopt;
  const auto shift = static_cast<unsigned>(64 - 8 * value.Size());
  return NumberText(static_cast<std::int64_t>(*number << shift) >> shift);
}

// The well-known types of the QuickTime File Format. Lists of numbers have no text.
std::optional<std::string> ValueText(std::uint32_t type, ByteReader value) {
  switch (type) {
    case 1:
      return NativeText(value.Text());
    case 2:
      return UTF16Text(value.Text(), true);
    case 21:
    case 65:
    case 66:
    case 67:
    case 74:
      return SignedText(value);
    case 22:
    case 75:
    case 76:
    case 77:
    case 78:
      if (const auto number = Unsigned(value)) return NumberText(*number);
      return std::nullopt;
    case 23:
      if (value.Size() != 4) return std::nullopt;
      return NumberText(std::bit_cast<float>(*value.U32BE(0)));
    case 24:
      if (value.Size() != 8) return std::nullopt;
      return NumberText(std::bit_cast<double>(*value.U64BE(0)));
    default:
      return std::nullopt;
  }
}

// data: type of the value, country and language, value.
std::optional<std::string> ItemText(FileWindow& file, const IsoBox& item) {
  const auto data = FindBox(file, item, FourCC("data"));
  if (!data || data->Size() < 8 || data->Size() > kMaxValueBytes) return std::nullopt;
  const ByteReader body = file.At(data->body, data->Size());
  return ValueText(body.U32BE(0).value_or(0), body.Clip(8));
}

void SetItems(FileWindow& file, const IsoBox& metaBox, TXMPMeta& meta) {
  const MetaItems items = FindMetaItems(file, metaBox);
  if (!items.list) return;
  IsoBoxes boxes(file, *items.list);
  while (const auto item = boxes.Next()) {
    if (item->type == 0 || item->type > items.keys.size()) continue;
    if (const auto text = ItemText(file, *item)) {
      SetBrawValue(items.keys[item->type - 1], *text, meta);
    }
  }
}

}  // namespace

bool IsBrawPath(std::string_view path) {
  return foundation::HasExtension(path, ".braw") || foundation::HasExtension(path, ".braw2");
}

void SetBrawValue(std::string_view name, const std::string& text, TXMPMeta& meta) {
  if (text.empty()) return;
  if (name == "camera_type") {
    meta.SetProperty(kNsTIFF, "Model", text);
    meta.SetProperty(kNsDM, "cameraModel", text);
  } else if (name == "firmware_version") {
    SetSoftware(meta, text);
  } else if (name == "good_take") {
    if (IsTrue(text)) meta.SetProperty(kNsDM, "good", "True");
  } else if (name == "date_recorded") {
    SetRecordedDate(text, meta);
  } else if (name == "focal_length") {
    SetFocalLength(text, meta);
  } else if (name == "iso") {
    if (!meta.HasProperty(kNsEXIF, "ISOSpeedRatings")) {
      meta.AppendArrayItem(kNsEXIF, "ISOSpeedRatings", ArrayForm::kSeq, text);
    }
  } else if (const auto* const known = std::ranges::find(kNames, name, &BrawName::name);
             known != std::end(kNames)) {
    meta.SetProperty(known->schema, known->property, text);
  } else {
    SetOther(name, text, meta);
  }
}

void SetBrawItems(FileWindow& file, const IsoBox& box, TXMPMeta& meta) {
  if (box.type == FourCC("meta")) return SetItems(file, box, meta);
  if (box.type != FourCC("udta")) return;
  if (const auto inner = FindBox(file, box, FourCC("meta"))) SetItems(file, *inner, meta);
}

bool SetBrawSidecar(std::string_view json, TXMPMeta& meta) {
  const auto values = ReadNamedValues(json);
  for (const auto& [name, text] : values) SetBrawValue(name, text, meta);
  return !values.empty();
}

TXMPMeta ReadSidecarOfBraw(const std::string& path) {
  TXMPMeta meta;
  if (!IsBrawPath(path)) return meta;
  const std::string stem = path.substr(0, path.size() - foundation::FileExtension(path).size());
  for (const char* extension : {".sidecar", ".SIDECAR"}) {
    const std::string sidecar = stem + extension;
    if (!foundation::MayExistOnCard(sidecar)) continue;
    const auto bytes = platform::ReadHead(sidecar, kMaxSidecarBytes);
    if (!bytes) continue;
    SetBrawSidecar(ByteReader(*bytes).Text(), meta);
    break;
  }
  return meta;
}

void AddBrawFacts(TXMPMeta&& braw, TXMPMeta& meta) {
  // The movie header also has the time.
  if (meta.HasProperty(kNsXMP, "CreateDate")) braw.DeleteProperty(kNsXMP, "CreateDate");
  braw.FillFrom(meta);
  meta = std::move(braw);
}

}  // namespace Sorvik::xmp
