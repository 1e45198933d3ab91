// SPDX-License-Identifier: MIT
#include "metadata/MachineRules.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

#include "metadata/FrameCounts.h"
#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"

namespace Sorvik::XMPSupport {
namespace {

using xmp::SXMPMeta;

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

std::string_view Trimmed(std::string_view text) {
  const auto start = text.find_first_not_of(kWhiteSpace);
  if (start == text.npos) return {};
  return text.substr(start, text.find_last_not_of(kWhiteSpace) - start + 1);
}

// Parses all of `text`; nullopt if it has anything after the number.
template <class Number>
std::optional<Number> ParseAll(std::string_view text) {
  if (text.starts_with('+') && !text.substr(1).starts_with('-')) text.remove_prefix(1);
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return number;
}

std::optional<Fraction> Reduced(std::int64_t numerator, std::int64_t denominator) {
  constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
  if (denominator == 0 || numerator == kLowest || denominator == kLowest) return std::nullopt;
  const std::int64_t divisor = std::gcd(numerator, denominator);
  const std::int64_t sign = denominator < 0 ? -1 : 1;
  return Fraction{sign * numerator / divisor, sign * denominator / divisor};
}

// Parses "23.976".
std::optional<Fraction> ParseDecimal(std::string_view text) {
  constexpr std::size_t kMaxDecimals = 9;
  const auto point = text.find('.');
  const std::string_view decimals = point == text.npos ? "" : text.substr(point + 1);
  if (decimals.size() > kMaxDecimals || decimals.find_first_of("+-") != decimals.npos) {
    return std::nullopt;
  }
  std::string digits(text.substr(0, point));
  digits += decimals;
  const auto number = ParseAll<std::int64_t>(digits);
  std::int64_t denominator = 1;
  for (std::size_t i = 0; i < decimals.size(); ++i) denominator *= 10;
  return number ? Reduced(*number, denominator) : std::nullopt;
}

std::optional<Fraction> ParseFraction(std::string_view text) {
  text = Trimmed(text);
  const auto separator = text.find_first_of("/:");
  if (separator == text.npos) return ParseDecimal(text);
  const auto numerator = ParseDecimal(Trimmed(text.substr(0, separator)));
  const auto denominator = ParseDecimal(Trimmed(text.substr(separator + 1)));
  constexpr std::int64_t kMaxPart = std::numeric_limits<std::int32_t>::max();
  const auto isSmall = [](const std::optional<Fraction>& part) {
    return part && std::max(part->numerator, -part->numerator) <= kMaxPart &&
           part->denominator <= kMaxPart;
  };
  if (!isSmall(numerator) || !isSmall(denominator)) return std::nullopt;
  return Reduced(numerator->numerator * denominator->denominator,
                 numerator->denominator * denominator->numerator);
}

Fraction StandardRate(const Fraction& rate) {
  if (rate.numerator <= 0) return rate;
  const xmp::Rate known = xmp::Normalise(
      {static_cast<std::uint64_t>(rate.numerator), static_cast<std::uint64_t>(rate.denominator)});
  return {static_cast<std::int64_t>(known.num), static_cast<std::int64_t>(known.den)};
}

// The units per second of a unit's duration in seconds, such as "1001/30000"; 0 if unknown.
Fraction RateOfScale(std::string_view scale) {
  const auto duration = ParseFraction(scale);
  if (!duration || duration->numerator <= 0) return {};
  return StandardRate({duration->denominator, duration->numerator});
}

bool TakeDigits(std::string_view& text, std::size_t count, unsigned& number) {
  if (text.size() < count) return false;
  const auto parsed = ParseAll<unsigned>(text.substr(0, count));
  if (!parsed || text.front() == '+') return false;
  number = *parsed;
  text.remove_prefix(count);
  return true;
}

bool TakeSeparator(std::string_view& text, std::string_view accepted) {
  if (text.empty() || accepted.find(text.front()) == accepted.npos) return false;
  text.remove_prefix(1);
  return true;
}

std::string TwoDigits(unsigned number) { return (number < 10 ? "0" : "") + std::to_string(number); }

// The normal form of a time zone, "Z" or "+02:00"; nullopt if `text` isn't one.
std::optional<std::string> ZoneText(std::string_view text) {
  if (text == "Z" || text == "z") return "Z";
  const std::string sign(text.substr(0, 1));
  unsigned hours = 0;
  unsigned minutes = 0;
  if (!TakeSeparator(text, "+-") || !TakeDigits(text, 2, hours)) return std::nullopt;
  TakeSeparator(text, ":");
  if (!text.empty() && !TakeDigits(text, 2, minutes)) return std::nullopt;
  if (!text.empty() || hours > 14 || minutes > 59) return std::nullopt;
  return sign + TwoDigits(hours) + ":" + TwoDigits(minutes);
}

// Appends the time of day and the zone. Returns nullopt if `rest` is anything else.
std::optional<IsoTime> WithTimeOfDay(std::string date, std::string_view rest) {
  unsigned hour = 0;
  unsigned minute = 0;
  unsigned second = 0;
  if (!TakeDigits(rest, 2, hour) || !TakeSeparator(rest, ":") || !TakeDigits(rest, 2, minute)) {
    return std::nullopt;
  }
  date += 'T' + TwoDigits(hour) + ":" + TwoDigits(minute);
  if (TakeSeparator(rest, ":")) {
    if (!TakeDigits(rest, 2, second)) return std::nullopt;
    date += ":" + TwoDigits(second);
    if (TakeSeparator(rest, ".,")) {
      const auto end = std::min(rest.find_first_not_of("0123456789"), rest.size());
      if (end == 0) return std::nullopt;
      date.append(".").append(rest.substr(0, end));
      rest.remove_prefix(end);
    }
  }
  if (hour > 23 || minute > 59 || second > 60) return std::nullopt;
  if (rest.empty()) return IsoTime{date, false};
  const auto zone = ZoneText(Trimmed(rest));
  if (!zone) return std::nullopt;
  return IsoTime{date + *zone, true};
}

std::optional<IsoTime> ParseTime(std::string_view text) {
  text = Trimmed(text);
  unsigned year = 0;
  unsigned month = 0;
  unsigned day = 0;
  std::string date(text.substr(0, 4));
  if (!TakeDigits(text, 4, year)) return std::nullopt;
  if (text.empty()) return IsoTime{date, false};
  if (!TakeSeparator(text, "-:/") || !TakeDigits(text, 2, month)) return std::nullopt;
  if (month < 1 || month > 12) return std::nullopt;
  date += "-" + TwoDigits(month);
  if (text.empty()) return IsoTime{date, false};
  if (!TakeSeparator(text, "-:/") || !TakeDigits(text, 2, day) || day < 1 || day > 31) {
    return std::nullopt;
  }
  date += "-" + TwoDigits(day);
  if (text.empty()) return IsoTime{date, false};
  if (!TakeSeparator(text, "T ")) return std::nullopt;
  return WithTimeOfDay(std::move(date), text);
}

// Parses the form of EXIF properties: "DD,MM.mmN" or "DD,MM,SSN".
std::optional<double> ParseCoordinate(std::string_view text) {
  text = Trimmed(text);
  if (text.size() < 2) return std::nullopt;
  const char direction = text.back();
  const bool isLatitude = direction == 'N' || direction == 'S';
  if (!isLatitude && direction != 'E' && direction != 'W') return std::nullopt;
  text.remove_suffix(1);
  double degrees = 0;
  double unit = 1;
  for (int part = 0; part < 3 && !text.empty(); ++part, unit *= 60) {
    const auto comma = std::min(text.find(','), text.size());
    const auto number = ParseAll<double>(Trimmed(text.substr(0, comma)));
    if (!number || !(*number >= 0) || (part > 0 && *number > 60)) return std::nullopt;
    degrees += *number / unit;
    text.remove_prefix(std::min(comma + 1, text.size()));
  }
  if (!text.empty() || degrees > (isLatitude ? 90 : 180)) return std::nullopt;
  return direction == 'S' || direction == 'W' ? -degrees : degrees;
}

// Runs a read; one broken property loses only its own value.
template <class Read>
void ReadSafely(Read read) {
  try {
    read();
  } catch (const xmp::XMP_Error&) {
    // A property of another form than expected has no value.
  }
}

std::string PropertyOf(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string value;
  ReadSafely([&] { meta.GetProperty(row.schemaNS, row.propertyName, &value); });
  return value;
}

std::string FieldOf(const SXMPMeta& meta, const char* name, const char* field) {
  std::string value;
  ReadSafely([&] { meta.GetStructField(xmp::kNsDM, name, xmp::kNsDM, field, &value); });
  return value;
}

MachineValue TextValue(const std::string& text) {
  return text.empty() ? MachineValue() : MachineValue(text);
}

template <class T>
MachineValue ValueOr(const std::optional<T>& value, const std::string& text) {
  return value ? MachineValue(*value) : TextValue(text);
}

MachineValue IntegerOf(const std::string& text) {
  return ValueOr(ParseAll<std::int64_t>(Trimmed(text)), text);
}

MachineValue RealOf(const std::string& text) {
  const auto number = ParseAll<double>(Trimmed(text));
  const bool isFinite = number && *number - *number == 0;
  return isFinite ? MachineValue(*number) : TextValue(text);
}

MachineValue FractionOf(const std::string& text) { return ValueOr(ParseFraction(text), text); }

MachineValue FrameRateOf(const std::string& text) {
  if (text == "NTSC") return Fraction{30000, 1001};
  if (text == "PAL") return Fraction{25, 1};
  const auto rate = ParseFraction(text);
  return rate ? MachineValue(StandardRate(*rate)) : TextValue(text);
}

MachineValue BooleanOf(const std::string& text) {
  if (text == "True") return true;
  if (text == "False") return false;
  return TextValue(text);
}

MachineValue TimeOf(const std::string& text) { return ValueOr(ParseTime(text), text); }

MachineValue CoordinateOf(const std::string& text) { return ValueOr(ParseCoordinate(text), text); }

MachineValue TimecodeOf(const std::string& text) {
  if (text.empty()) return {};
  return TimecodeValue{text, {}, text.find(';') != text.npos};
}

MachineValue FrameSizeOf(const std::string& text) {
  const auto times = text.find(" x ");
  if (times == text.npos) return TextValue(text);
  const auto rest = text.substr(times + 3);
  const auto blank = std::min(rest.find(' '), rest.size());
  const auto width = ParseAll<std::int64_t>(text.substr(0, times));
  const auto height = ParseAll<std::int64_t>(rest.substr(0, blank));
  if (!width || !height) return TextValue(text);
  return FrameSizeValue{*width, *height, rest.substr(std::min(blank + 1, rest.size()))};
}

// The unit of a display text depends on the language.
MachineValue DataRateOf(const std::string& text) {
  const auto end = std::min(text.find_first_not_of("0123456789./"), text.size());
  return ValueOr(ParseFraction(std::string_view(text).substr(0, end)), text);
}

MachineValue ListOf(const std::string& text) {
  std::vector<std::string> items;
  std::string_view rest = text;
  while (!rest.empty()) {
    const auto end = std::min(rest.find(';'), rest.size());
    if (end > 0) items.emplace_back(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return items.empty() ? MachineValue() : MachineValue(std::move(items));
}

MachineValue FrameCountOf(const std::string& text) {
  std::int64_t frames = 0;
  std::string rate;
  if (!ParseFrameCount(text, frames, rate))
    return TextValue(text == kFrameCountSeparator ? "" : text);
  return frames;
}

template <MachineValue (*parse)(const std::string&)>
MachineValue FromProperty(const SXMPMeta& meta, const XMPCrossReference& row) {
  return parse(PropertyOf(meta, row));
}

MachineValue FirstItemFrom(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string value;
  ReadSafely([&] { meta.GetArrayItem(row.schemaNS, row.propertyName, 1, &value); });
  return TextValue(value);
}

MachineValue ListFrom(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::vector<std::string> items;
  ReadSafely([&] {
    std::string item;
    for (std::int32_t i = 1; meta.GetArrayItem(row.schemaNS, row.propertyName, i, &item); ++i) {
      items.push_back(item);
    }
  });
  return items.empty() ? MachineValue() : MachineValue(std::move(items));
}

MachineValue AlternativeTextFrom(const SXMPMeta& meta, const XMPCrossReference& row) {
  // The field "Name" is the property dc:title.
  const bool isTitle = std::string_view(row.propertyName) == kNameField;
  const char* const ns = isTitle ? xmp::kNsDC : row.schemaNS;
  const char* const name = isTitle ? "title" : row.propertyName;
  std::string value;
  ReadSafely([&] { meta.GetLocalizedText(ns, name, nullptr, "x-default", nullptr, &value); });
  if (value.empty()) ReadSafely([&] { meta.GetProperty(ns, name, &value); });
  return TextValue(value);
}

MachineValue ProjectFrom(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string text = FieldOf(meta, row.propertyName, "path");
  const std::string type = FieldOf(meta, row.propertyName, "type");
  if (!type.empty()) text += (text.empty() ? "" : " ") + type;
  return TextValue(text);
}

MachineValue FrameSizeFrom(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string parts[3];
  ReadSafely([&] {
    const char* const names[] = {"w", "h", "unit"};
    for (std::size_t i = 0; i < 3; ++i) {
      meta.GetStructField(row.schemaNS, row.propertyName, xmp::kNsDimensions, names[i], &parts[i]);
    }
  });
  const auto width = ParseAll<std::int64_t>(Trimmed(parts[0]));
  const auto height = ParseAll<std::int64_t>(Trimmed(parts[1]));
  if (!width || !height) return {};
  return FrameSizeValue{*width, *height, parts[2]};
}

MachineValue TimecodeFrom(const SXMPMeta& meta, const XMPCrossReference&) {
  const std::string text = FieldOf(meta, "startTimecode", "timeValue");
  if (text.empty()) return {};
  const std::string format = FieldOf(meta, "startTimecode", "timeFormat");
  // "2997DropTimecode", "25Timecode": the digits after the second one are decimals.
  std::string digits = format.substr(0, format.find_first_not_of("0123456789"));
  if (digits.size() > 2) digits.insert(2, ".");
  const auto rate = ParseFraction(digits);
  const bool drops =
      format.empty() ? text.find(';') != text.npos
                     : format.find("NonDrop") == format.npos && format.find("Drop") != format.npos;
  return TimecodeValue{text, rate ? StandardRate(*rate) : Fraction(), drops};
}

MachineValue DurationFrom(const SXMPMeta& meta, const XMPCrossReference&) {
  const auto count = ParseAll<std::int64_t>(Trimmed(FieldOf(meta, "duration", "value")));
  if (!count) return {};
  return DurationValue{*count, RateOfScale(FieldOf(meta, "duration", "scale"))};
}

MachineValue ScaleFrom(const SXMPMeta& meta, const XMPCrossReference&) {
  return FractionOf(FieldOf(meta, "duration", "scale"));
}

MachineValue FrameCountFrom(const SXMPMeta& meta, const XMPCrossReference&) {
  return IntegerOf(FieldOf(meta, "duration", "value"));
}

}  // namespace

namespace MachineRules {

const MachineRule kText{FromProperty<TextValue>, TextValue};
const MachineRule kInteger{FromProperty<IntegerOf>, IntegerOf};
const MachineRule kReal{FromProperty<RealOf>, RealOf};
const MachineRule kFraction{FromProperty<FractionOf>, FractionOf};
const MachineRule kFrameRate{FromProperty<FrameRateOf>, FrameRateOf};
const MachineRule kBoolean{FromProperty<BooleanOf>, BooleanOf};
const MachineRule kTime{FromProperty<TimeOf>, TimeOf};
const MachineRule kCoordinate{FromProperty<CoordinateOf>, CoordinateOf};
const MachineRule kFirstItem{FirstItemFrom, TextValue};
const MachineRule kList{ListFrom, ListOf};
const MachineRule kAlternativeText{AlternativeTextFrom, TextValue};
const MachineRule kProject{ProjectFrom, TextValue};
const MachineRule kFrameSize{FrameSizeFrom, FrameSizeOf};
const MachineRule kDataRate{FromProperty<DataRateOf>, DataRateOf};
const MachineRule kTimecode{TimecodeFrom, TimecodeOf};
const MachineRule kDuration{DurationFrom, TimecodeOf};
const MachineRule kScale{ScaleFrom, FractionOf};
const MachineRule kFrameCount{FrameCountFrom, FrameCountOf};

}  // namespace MachineRules

MachineValue DurationOfTimecode(std::string_view timecode, const Fraction& rate) {
  if (rate.numerator <= 0) return {};
  std::int64_t parts[4] = {};
  for (std::size_t i = 0; i < 4; ++i) {
    const auto end = i == 3 ? timecode.size() : std::min(timecode.find(':'), timecode.size());
    const auto number = ParseAll<std::uint32_t>(timecode.substr(0, end));
    if (!number || timecode.starts_with('+')) return {};
    parts[i] = *number;
    timecode.remove_prefix(std::min(end + 1, timecode.size()));
  }
  const std::int64_t perSecond =
      (rate.numerator + rate.denominator / 2) / rate.denominator;  // 30 for 29.97
  // At most 2^32 hours, so that this can't overflow with at most 2^17 frames per second.
  constexpr std::int64_t kMaxPerSecond = 1 << 17;
  if (perSecond < 1 || perSecond > kMaxPerSecond) return {};
  return DurationValue{((parts[0] * 60 + parts[1]) * 60 + parts[2]) * perSecond + parts[3], rate};
}

}  // namespace Sorvik::XMPSupport
