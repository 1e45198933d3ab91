// SPDX-License-Identifier: MIT
#include "xmp/readers/RecordingBlock.h"

#include <algorithm>
#include <cstdio>

#include "xmp/Namespaces.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

enum Tag : std::uint8_t {
  kTimecode = 0x13,
  kDate = 0x18,  // zone, YY, YY, MM
  kTime = 0x19,  // DD, hh, mm, ss
  kWhiteBalance = 0xA8,
  kLatitudeRef = 0xB1,
  kLatitude = 0xB2,  // degrees, minutes and seconds in three tags
  kLongitudeRef = 0xB5,
  kLongitude = 0xB6,
  kAltitudeRef = 0xB9,
  kAltitude = 0xBA,
  kGPSStatus = 0xBE,
  kMaker = 0xE0,
  kModel = 0xE4,  // text in three tags; other makers use them differently
};
constexpr std::uint16_t kSony = 0x0108;

// Tags of 1 byte with 4 bytes of data each, in ascending order; at most 255.
class Block {
 public:
  explicit Block(ByteReader bytes) : bytes_(bytes) {}

  std::optional<std::array<std::byte, 4>> Find(unsigned tag) const {
    constexpr std::uint64_t kEntry = 5;
    const std::uint64_t count = bytes_.U8(0).value_or(0);
    for (std::uint64_t i = 0; i < count; ++i) {
      const auto entry = bytes_.ViewAt<kEntry>(1 + i * kEntry);
      if (!entry) break;
      if (std::to_integer<unsigned>((*entry)[0]) != tag) continue;
      std::array<std::byte, 4> data;
      std::ranges::copy(entry->subspan<1, 4>(), data.begin());
      return data;
    }
    return std::nullopt;
  }
  char Letter(unsigned tag) const {
    const auto data = Find(tag);
    return data ? std::to_integer<char>((*data)[0]) : '\0';
  }
  // Two 16-bit numbers.
  std::optional<Rate> Fraction(unsigned tag) const {
    const auto data = Find(tag);
    if (!data) return std::nullopt;
    const ByteReader reader(*data);
    return Rate{reader.U16BE(0).value_or(0), reader.U16BE(2).value_or(0)};
  }

 private:
  ByteReader bytes_;
};

void ReadCoordinate(const Block& block, unsigned refTag, unsigned tag, const char* name,
                    TXMPMeta& meta) {
  const auto degrees = block.Fraction(tag);
  const auto minutes = block.Fraction(tag + 1);
  const auto seconds = block.Fraction(tag + 2);
  if (!degrees || !minutes) return;
  SetGPSCoordinate(meta, name, {*degrees, *minutes, seconds.value_or(Rate{0, 1})},
                   block.Letter(refTag));
}

void ReadPosition(const Block& block, TXMPMeta& meta) {
  if (block.Letter(kGPSStatus) == 'V') return;  // the receiver had no fix
  ReadCoordinate(block, kLatitudeRef, kLatitude, "GPSLatitude", meta);
  ReadCoordinate(block, kLongitudeRef, kLongitude, "GPSLongitude", meta);
  const auto altitude = block.Fraction(kAltitude);
  if (!altitude || altitude->den == 0) return;
  meta.SetProperty(kNsEXIF, "GPSAltitude",
                   std::to_string(altitude->num) + "/" + std::to_string(altitude->den));
  const auto reference = block.Find(kAltitudeRef);
  if (reference && (*reference)[0] <= std::byte{1}) {
    meta.SetProperty(kNsEXIF, "GPSAltitudeRef", (*reference)[0] == std::byte{0} ? "0" : "1");
  }
}

std::string ModelText(const Block& block) {
  std::string model;
  for (unsigned part = 0; part < 3; ++part) {
    const auto data = block.Find(kModel + part);
    if (!data) break;
    for (const std::byte b : *data) {
      const char c = std::to_integer<char>(b);
      if (c < ' ' || c > '~') return model;
      model.push_back(c);
    }
  }
  return model;
}

}  // namespace

void ReadRecordingDate(const std::array<std::byte, 8>& bytes, RecordingFacts& facts) {
  const auto century = FromBCD(bytes[1]);
  const auto year = FromBCD(bytes[2]);
  const auto month = FromBCD(bytes[3]);
  const auto day = FromBCD(bytes[4]);
  const auto hour = FromBCD(bytes[5]);
  const auto minute = FromBCD(bytes[6]);
  const auto second = FromBCD(bytes[7]);
  if (!century || !year || !month || !day || !hour || !minute || !second) return;
  DateTime date;
  date.year = *century * 100 + *year;
  date.month = *month;
  date.day = *day;
  date.hour = *hour;
  date.minute = *minute;
  date.second = *second;
  if (!date.Valid()) return;
  facts.recorded = date;
  // Bit 7 unused, 6 daylight saving time (included in the hours), 5 west, 4 to 1 hours, 0 half an
  // hour.
  const unsigned zone = std::to_integer<unsigned>(bytes[0]);
  const unsigned hours = zone >> 1 & 0x0F;
  facts.zone.clear();
  if ((zone & 0x80) != 0 || hours > 14) return;
  const unsigned minutes = (zone & 1) != 0 ? 30 : 0;
  const bool west = (zone & 0x20) != 0 && (hours != 0 || minutes != 0);  // UTC is +00:00
  char text[16];
  std::snprintf(text, sizeof text, "%c%02u:%02u", west ? '-' : '+', hours, minutes);
  facts.zone = text;
}

std::string MakerName(std::uint16_t maker) {
  switch (maker) {
    case 0x0103:
      return "Panasonic";
    case kSony:
      return "Sony";
    case 0x1011:
      return "Canon";
    case 0x1104:
      return "JVC";
    default:
      return {};
  }
}

RecordingFacts ReadRecordingBlock(ByteReader bytes, TXMPMeta& meta) {
  const Block block(bytes);
  RecordingFacts facts;
  if (const auto timecode = block.Find(kTimecode)) facts.timecode = TimecodeFromBCD(*timecode);
  const auto date = block.Find(kDate);
  const auto time = block.Find(kTime);
  if (date && time) {
    std::array<std::byte, 8> both;
    std::ranges::copy(*date, both.begin());
    std::ranges::copy(*time, both.begin() + 4);
    ReadRecordingDate(both, facts);
  }
  if (const auto maker = block.Find(kMaker)) {
    const std::uint16_t number = ByteReader(*maker).U16BE(0).value_or(0);
    facts.maker = MakerName(number);
    if (number == kSony) facts.model = ModelText(block);
  }
  if (const auto balance = block.Find(kWhiteBalance)) {
    if ((*balance)[3] == std::byte{0}) meta.SetProperty(kNsCRS, "WhiteBalance", "Auto");
    if ((*balance)[3] == std::byte{1}) meta.SetProperty(kNsCRS, "WhiteBalance", "Custom");
  }
  ReadPosition(block, meta);
  return facts;
}

}  // namespace Sorvik::xmp
