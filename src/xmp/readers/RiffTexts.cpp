// SPDX-License-Identifier: MIT
#include "xmp/readers/RiffTexts.h"

#include <algorithm>

#include "xmp/Namespaces.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

constexpr std::uint64_t kMaxTextBytes = 64 * 1024;

struct InfoName {
  std::uint32_t id;
  const char* schema;
  const char* property;
};
// Chunks stored as one text property; SetInfoText handles the others.
constexpr InfoName kInfoNames[] = {
    {FourCC("IART"), kNsDM, "artist"},      {FourCC("ICMT"), kNsDM, "logComment"},
    {FourCC("IENG"), kNsDM, "engineer"},    {FourCC("IGNR"), kNsDM, "genre"},
    {FourCC("IPRD"), kNsDM, "album"},       {FourCC("ITRK"), kNsDM, "trackNumber"},
    {FourCC("IPRT"), kNsDM, "trackNumber"}, {FourCC("IMED"), kNsDC, "source"},
};

void SetInfoText(std::uint32_t id, const std::string& text, TXMPMeta& meta) {
  if (text.empty()) return;
  switch (id) {
    case FourCC("INAM"):
      return meta.SetLocalizedText(kNsDC, "title", "x-default", text);
    case FourCC("ISBJ"):
      return meta.SetLocalizedText(kNsDC, "description", "x-default", text);
    case FourCC("ICOP"):
      return SetCopyright(meta, text);
    case FourCC("ISFT"):
      return SetSoftware(meta, text);
    case FourCC("ICRD"):
      return SetRiffDate(text, meta);
    case FourCC("ISMP"):
      return meta.SetStructField(kNsDM, "startTimecode", kNsDM, "timeValue", text);
    default:
      break;
  }
  for (const InfoName& name : kInfoNames) {
    if (name.id == id) meta.SetProperty(name.schema, name.property, text);
  }
}

// The month of "Mon Mar 10 ..." or "MON MAR 10 ..."; 0 if invalid.
unsigned MonthOf(std::string_view name) {
  constexpr std::string_view kMonths = "janfebmaraprmayjunjulaugsepoctnovdec";
  std::string lower(name);
  for (char& c : lower) c = static_cast<char>(c | 0x20);
  const std::size_t at = lower.size() == 3 ? kMonths.find(lower) : std::string_view::npos;
  return at == std::string_view::npos || at % 3 != 0 ? 0 : static_cast<unsigned>(at / 3 + 1);
}

std::string TwoDigits(unsigned value) {
  return std::string(value < 10 ? "0" : "") + std::to_string(value);
}

// "Mon Mar 10 15:04:43 2003"; the first digit of the day may be a space.
std::string FromCalendarText(std::string_view text) {
  if (text.size() < 24) return {};
  const unsigned month = MonthOf(text.substr(4, 3));
  if (month == 0) return {};
  std::string date(text.substr(20, 4));
  date.append("-").append(TwoDigits(month)).append("-").append(text.substr(8, 2));
  if (date[8] == ' ') date[8] = '0';
  date.append("T").append(text.substr(11, 8));
  return ExifDate(date);
}

// "2003/03/10/ 15:04".
std::string FromSlashes(std::string_view text) {
  if (text.size() < 17 || text[4] != '/' || text[10] != '/') return {};
  std::string date(text.substr(0, 10));
  date.append(" ").append(text.substr(12, 5)).append(":00");
  return ExifDate(date);
}

}  // namespace

void SetRiffDate(std::string_view text, TXMPMeta& meta) {
  std::string date = FromCalendarText(text);
  if (date.empty()) date = ExifDate(text);
  if (date.empty()) date = FromSlashes(text);
  // A date without time is a valid XMP date already.
  if (date.empty() && text.size() == 10 && ParseDate(std::string(text) + "T00:00:00")) date = text;
  meta.SetProperty(kNsXMP, "CreateDate", date);
}

void SetInfoTexts(FileWindow& file, const RiffChunk& list, TXMPMeta& meta) {
  RiffChunks chunks(file, list);
  while (const auto chunk = chunks.Next()) {
    SetInfoText(chunk->id, NativeText(ChunkBytes(file, *chunk, kMaxTextBytes).Text()), meta);
  }
}

void SetTapeTexts(FileWindow& file, const RiffChunk& list, TXMPMeta& meta) {
  RiffChunks chunks(file, list);
  while (const auto chunk = chunks.Next()) {
    const std::string text = NativeText(ChunkBytes(file, *chunk, kMaxTextBytes).Text());
    switch (chunk->id) {
      case FourCC("tc_O"):
        meta.SetStructField(kNsDM, "startTimecode", kNsDM, "timeValue", text);
        break;
      case FourCC("tc_A"):
        meta.SetStructField(kNsDM, "altTimecode", kNsDM, "timeValue", text);
        break;
      case FourCC("rn_O"):
        meta.SetProperty(kNsDM, "tapeName", text);
        break;
      case FourCC("rn_A"):
        meta.SetProperty(kNsDM, "altTapeName", text);
        break;
      default:
        break;
    }
  }
}

}  // namespace Sorvik::xmp
