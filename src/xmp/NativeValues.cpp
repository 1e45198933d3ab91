// SPDX-License-Identifier: MIT
#include "xmp/NativeValues.h"

#include <cmath>
#include <cstdio>
#include <numeric>

#include "xmp/Namespaces.h"

namespace Sorvik::xmp {

namespace {

struct StandardRate {
  Rate rate;
  unsigned base;           // frames per second in the timecode text
  const char* format;      // xmpDM:timeFormat without drop frame
  const char* dropFormat;  // null for rates without drop frame
};
constexpr StandardRate kStandardRates[] = {
    {{24000, 1001}, 24, "23976Timecode", nullptr},
    {{24, 1}, 24, "24Timecode", nullptr},
    {{25, 1}, 25, "25Timecode", nullptr},
    {{30000, 1001}, 30, "2997NonDropTimecode", "2997DropTimecode"},
    {{30, 1}, 30, "30Timecode", nullptr},
    {{50, 1}, 50, "50Timecode", nullptr},
    {{60000, 1001}, 60, "5994NonDropTimecode", "5994DropTimecode"},
    {{60, 1}, 60, "60Timecode", nullptr},
};

// Rates are read from 32-bit fields; larger parts are invalid, and products of these fit in 64
// bits.
constexpr std::uint64_t kMaxRatePart = 0xFFFFFFFF;

bool ApproximatelyEqual(const Rate& a, const Rate& b) {
  const double quotient = static_cast<double>(a.num) / static_cast<double>(a.den) *
                          static_cast<double>(b.den) / static_cast<double>(b.num);
  return quotient > 1 - 1e-4 && quotient < 1 + 1e-4;
}

bool ParseDigits(std::string_view text, std::size_t at, std::size_t count, unsigned& value) {
  value = 0;
  if (text.size() < at + count) return false;
  for (const char c : text.substr(at, count)) {
    if (c < '0' || c > '9') return false;
    value = value * 10 + static_cast<unsigned>(c - '0');
  }
  return true;
}

std::string FractionText(std::uint64_t a, std::uint64_t b) {
  return std::to_string(a) + "/" + std::to_string(b);
}

}  // namespace

Rate Normalise(Rate rate) {
  if (!rate.Known() || rate.num > kMaxRatePart || rate.den > kMaxRatePart) return Rate();
  const std::uint64_t divisor = std::gcd(rate.num, rate.den);
  const Rate reduced{rate.num / divisor, rate.den / divisor};

  for (const StandardRate& standard : kStandardRates) {
    if (ApproximatelyEqual(reduced, standard.rate)) return standard.rate;
  }
  return reduced;
}

Rate NearestStandardRate(double perSecond, double maxDeviation) {
  Rate nearest;
  for (const StandardRate& standard : kStandardRates) {
    const double rate =
        static_cast<double>(standard.rate.num) / static_cast<double>(standard.rate.den);
    const double deviation = std::fabs(perSecond / rate - 1);
    if (!(deviation <= maxDeviation)) continue;
    maxDeviation = deviation;
    nearest = standard.rate;
  }
  return nearest;
}

std::optional<unsigned> FromBCD(std::byte value, unsigned mask) noexcept {
  const unsigned bits = std::to_integer<unsigned>(value) & mask;
  const unsigned high = bits >> 4;
  const unsigned low = bits & 0x0F;
  if (high > 9 || low > 9) return std::nullopt;
  return high * 10 + low;
}

bool DateTime::Valid() const noexcept {
  constexpr unsigned kDays[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return year >= 1900 && year <= 9999 && month >= 1 && month <= 12 && day >= 1 &&
         day <= kDays[month - 1] && hour < 24 && minute < 60 && second <= 60 && millisecond < 1000;
}

std::string DateText(const DateTime& date) {
  if (!date.Valid()) return {};
  char text[48];
  std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u", date.year, date.month, date.day,
                date.hour, date.minute, date.second);
  std::string result = text;
  if (date.millisecond != 0) {
    std::snprintf(text, sizeof text, ".%03u", date.millisecond);
    result += text;
  }
  return result;
}

std::string DateOf1904(std::uint64_t seconds) {
  // From 1904 to 1970; earlier dates come from clocks that were never set.
  constexpr std::uint64_t kTo1970 = 2'082'844'800;
  if (seconds <= kTo1970) return {};
  std::uint64_t days = (seconds - kTo1970) / 86400;
  const std::uint64_t rest = (seconds - kTo1970) % 86400;
  if (days > 3'000'000) return {};
  // Converts a day count to a civil date, in years that begin in March.
  days += 719'468;
  const std::uint64_t era = days / 146'097;
  const std::uint64_t dayOfEra = days % 146'097;
  const std::uint64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
  const std::uint64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::uint64_t month = (5 * dayOfYear + 2) / 153;
  DateTime date;
  date.day = static_cast<unsigned>(dayOfYear - (153 * month + 2) / 5 + 1);
  date.month = static_cast<unsigned>(month < 10 ? month + 3 : month - 9);
  date.year = static_cast<unsigned>(yearOfEra + era * 400 + (date.month <= 2 ? 1 : 0));
  date.hour = static_cast<unsigned>(rest / 3600);
  date.minute = static_cast<unsigned>(rest / 60 % 60);
  date.second = static_cast<unsigned>(rest % 60);
  const std::string text = DateText(date);
  return text.empty() ? text : text + "Z";
}

std::optional<DateTime> ParseDate(std::string_view text) {
  DateTime date;
  constexpr std::size_t kLength = 19;
  if (text.size() < kLength || text[4] != '-' || text[7] != '-' ||
      (text[10] != ' ' && text[10] != 'T') || text[13] != ':' || text[16] != ':') {
    return std::nullopt;
  }
  if (!ParseDigits(text, 0, 4, date.year) || !ParseDigits(text, 5, 2, date.month) ||
      !ParseDigits(text, 8, 2, date.day) || !ParseDigits(text, 11, 2, date.hour) ||
      !ParseDigits(text, 14, 2, date.minute) || !ParseDigits(text, 17, 2, date.second) ||
      !date.Valid()) {
    return std::nullopt;
  }
  return date;
}

Timecode TimecodeOfFrames(std::uint64_t frames, unsigned base, bool drop) {
  Timecode timecode;
  if (base == 0) return timecode;
  timecode.drop = drop && base % 30 == 0;
  if (timecode.drop) {
    // SMPTE ST 12-1: frame numbers 0 and 1 (of 30) are skipped each minute except every tenth.
    const std::uint64_t dropped = base / 15;
    const std::uint64_t tenMinutes = 600 * std::uint64_t{base} - 9 * dropped;
    const std::uint64_t minute = 60 * std::uint64_t{base} - dropped;
    frames %= 144 * tenMinutes;
    const std::uint64_t rest = frames % tenMinutes;
    frames += 9 * dropped * (frames / tenMinutes);
    if (rest >= dropped) frames += dropped * ((rest - dropped) / minute);
  }
  timecode.frames = static_cast<unsigned>(frames % base);
  const std::uint64_t seconds = frames / base % 86400;
  timecode.seconds = static_cast<unsigned>(seconds % 60);
  timecode.minutes = static_cast<unsigned>(seconds / 60 % 60);
  timecode.hours = static_cast<unsigned>(seconds / 3600);
  return timecode;
}

std::optional<Timecode> TimecodeFromBCD(const std::array<std::byte, 4>& bytes) {
  const auto frames = FromBCD(bytes[0], 0x3F);
  const auto seconds = FromBCD(bytes[1], 0x7F);
  const auto minutes = FromBCD(bytes[2], 0x7F);
  const auto hours = FromBCD(bytes[3], 0x3F);
  if (!frames || !seconds || !minutes || !hours) return std::nullopt;
  if (*seconds > 59 || *minutes > 59 || *hours > 23) return std::nullopt;
  const bool drop = (bytes[0] & std::byte{0x40}) != std::byte{0};
  return Timecode{*hours, *minutes, *seconds, *frames, drop};
}

std::string TimecodeText(const Timecode& timecode) {
  char text[64];
  const char separator = timecode.drop ? ';' : ':';
  std::snprintf(text, sizeof text, "%02u%c%02u%c%02u%c%02u", timecode.hours, separator,
                timecode.minutes, separator, timecode.seconds, separator, timecode.frames);
  return text;
}

void SetFrameRate(TXMPMeta& meta, Rate rate) {
  rate = Normalise(rate);
  if (!rate.Known()) return;
  const std::uint64_t thousandths = (rate.num * 1000 + rate.den / 2) / rate.den;
  std::string text = std::to_string(thousandths / 1000);
  char fraction[8];
  std::snprintf(fraction, sizeof fraction, ".%03u", static_cast<unsigned>(thousandths % 1000));
  text += fraction;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  meta.SetProperty(kNsDM, "videoFrameRate", std::move(text));
}

void SetDuration(TXMPMeta& meta, std::uint64_t frames, Rate rate) {
  rate = Normalise(rate);
  if (!rate.Known()) return;
  meta.SetStructField(kNsDM, "duration", kNsDM, "value", std::to_string(frames));
  meta.SetStructField(kNsDM, "duration", kNsDM, "scale", FractionText(rate.den, rate.num));
}

void SetStartTimecode(TXMPMeta& meta, const Timecode& timecode, Rate rate) {
  rate = Normalise(rate);
  meta.SetStructField(kNsDM, "startTimecode", kNsDM, "timeValue", TimecodeText(timecode));
  for (const StandardRate& standard : kStandardRates) {
    if (standard.rate != rate) continue;
    const char* format = timecode.drop ? standard.dropFormat : standard.format;
    if (format != nullptr) {
      meta.SetStructField(kNsDM, "startTimecode", kNsDM, "timeFormat", format);
    }
  }
}

void SetFrameSize(TXMPMeta& meta, std::uint32_t width, std::uint32_t height) {
  if (width == 0 || height == 0) return;
  meta.SetStructField(kNsDM, "videoFrameSize", kNsDimensions, "w", std::to_string(width));
  meta.SetStructField(kNsDM, "videoFrameSize", kNsDimensions, "h", std::to_string(height));
  meta.SetStructField(kNsDM, "videoFrameSize", kNsDimensions, "unit", "pixel");
}

void SetPixelAspectRatio(TXMPMeta& meta, std::uint64_t width, std::uint64_t height) {
  if (width == 0 || height == 0) return;
  const std::uint64_t divisor = std::gcd(width, height);
  meta.SetProperty(kNsDM, "videoPixelAspectRatio", FractionText(width / divisor, height / divisor));
}

void SetPixelDepth(TXMPMeta& meta, unsigned bits) {
  if (bits == 0) return;
  const bool named = bits == 8 || bits == 16 || bits == 24 || bits == 32;
  meta.SetProperty(kNsDM, "videoPixelDepth", named ? std::to_string(bits) + "Int" : "Other");
}

void SetColorSpace(TXMPMeta& meta, unsigned primaries, unsigned matrix) {
  constexpr unsigned kUnspecified = 2;
  if (primaries == 0 || primaries == kUnspecified) primaries = matrix;
  switch (primaries) {
    case 1:
      return meta.SetProperty(kNsDM, "videoColorSpace", "CCIR-709");
    case 5:
    case 6:
      return meta.SetProperty(kNsDM, "videoColorSpace", "CCIR-601");
    case 9:
      return meta.SetProperty(kNsDM, "videoColorSpace", "BT.2020");
    default:
      break;
  }
}

void SetAudioSampleRate(TXMPMeta& meta, std::uint64_t perSecond) {
  if (perSecond != 0) meta.SetProperty(kNsDM, "audioSampleRate", std::to_string(perSecond));
}

void SetAudioSampleBits(TXMPMeta& meta, unsigned bits) {
  if (bits == 0) return;
  const bool named = bits == 8 || bits == 16 || bits == 24 || bits == 32;
  meta.SetProperty(kNsDM, "audioSampleType", named ? std::to_string(bits) + "Int" : "Other");
}

void SetAudioChannels(TXMPMeta& meta, unsigned channels) {
  const char* type = "Other";
  switch (channels) {
    case 0:
      return;
    case 1:
      type = "Mono";
      break;
    case 2:
      type = "Stereo";
      break;
    case 6:
      type = "5.1";
      break;
    case 8:
      type = "7.1";
      break;
    case 16:
      type = "16 Channel";
      break;
    default:
      break;
  }
  meta.SetProperty(kNsDM, "audioChannelType", type);
}

void SetRecordingDate(TXMPMeta& meta, const DateTime& date, std::string_view zone) {
  const std::string text = DateText(date);
  if (text.empty()) return;
  meta.SetProperty(kNsXMP, "CreateDate", text + std::string(zone));
  meta.SetProperty(kNsDM, "shotDate", text + std::string(zone));
}

void SetGPSCoordinate(TXMPMeta& meta, std::string_view name, const std::array<Rate, 3>& parts,
                      char reference) {
  constexpr double kUnitsPerMinute = 100'000;  // 5 decimals of a minute are 2 cm
  double minutes = 0;
  double unit = 60;
  for (const Rate& part : parts) {
    if (part.den == 0) return;
    minutes += unit * static_cast<double>(part.num) / static_cast<double>(part.den);
    unit /= 60;
  }
  const bool latitude = reference == 'N' || reference == 'S';
  if (!latitude && reference != 'E' && reference != 'W') return;
  if (minutes > (latitude ? 90 : 180) * 60) return;
  const auto total = static_cast<std::uint64_t>(minutes * kUnitsPerMinute + 0.5);
  char text[48];
  std::snprintf(text, sizeof text, "%u,%u.%05u%c", static_cast<unsigned>(total / 6'000'000),
                static_cast<unsigned>(total / 100'000 % 60), static_cast<unsigned>(total % 100'000),
                reference);
  meta.SetProperty(kNsEXIF, name, text);
}

}  // namespace Sorvik::xmp
