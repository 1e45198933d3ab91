// SPDX-License-Identifier: MIT
#include "xmp/readers/NativeText.h"

#include <array>
#include <numeric>

#include "SorvikProvider/foundation/UTF16String.h"
#include "foundation/ByteReader.h"
#include "foundation/XmlEncoding.h"
#include "xmp/Namespaces.h"

namespace Sorvik::xmp {

namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";

std::string_view Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kWhiteSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Removes the next number of an ISO 6709 text, sign and digits, and returns it.
std::string_view TakeNumber(std::string_view& text) {
  if (text.empty() || (text[0] != '+' && text[0] != '-')) return {};
  std::size_t end = 1;
  while (end < text.size() && (IsDigit(text[end]) || text[end] == '.')) ++end;
  const std::string_view number = text.substr(0, end);
  text.remove_prefix(end);
  return number;
}

// Degrees have `degreeDigits` digits, optionally followed by two digits each of minutes and
// seconds; only the last part may have decimals.
void SetCoordinate(TXMPMeta& meta, std::string_view name, std::string_view number,
                   std::size_t degreeDigits, std::string_view references) {
  if (number.size() < 2) return;
  const char reference = references[number[0] == '+' ? 0 : 1];
  std::string_view digits = number.substr(1);
  const std::size_t integerDigits = std::min(digits.find('.'), digits.size());
  std::array<Rate, 3> parts = {Rate{0, 1}, Rate{0, 1}, Rate{0, 1}};
  std::size_t lengths[] = {degreeDigits, 2, 2};
  std::size_t rest = integerDigits;
  for (std::size_t i = 0; i < parts.size() && rest > 0; ++i) {
    const bool last = rest <= lengths[i] || i + 1 == parts.size();
    const std::size_t take = last ? digits.size() : lengths[i];
    parts[i] = DecimalFraction(digits.substr(0, take));
    if (parts[i].den == 0) return;
    if (last) break;
    digits.remove_prefix(take);
    rest -= take;
  }
  SetGPSCoordinate(meta, name, parts, reference);
}

}  // namespace

std::string NativeText(std::string_view bytes) {
  const std::string_view text = Trimmed(bytes.substr(0, bytes.find('\0')));
  return text.empty() ? std::string() : foundation::ToUTF8(text);
}

std::string Latin1Text(std::string_view bytes) {
  std::u16string wide;
  for (const char c : Trimmed(bytes.substr(0, bytes.find('\0')))) {
    wide.push_back(static_cast<unsigned char>(c));
  }
  return Hestra::MakeStdString(wide);
}

std::string UTF16Text(std::string_view bytes, bool bigEndian) {
  const auto reader = foundation::ReaderOf(bytes);
  std::u16string wide;
  for (std::uint64_t at = 0; reader.Holds(at, 2); at += 2) {
    const char16_t unit = *reader.U16(at, bigEndian);
    if (unit == 0) break;
    if (at == 0 && unit == 0xFFFE) return UTF16Text(bytes.substr(2), !bigEndian);
    if (at != 0 || unit != 0xFEFF) wide.push_back(unit);
  }
  return NativeText(Hestra::MakeStdString(wide));
}

std::string ExifDate(std::string_view text) {
  std::string date(Trimmed(text).substr(0, 19));
  if (date.size() < 19) return {};
  for (const std::size_t at : {std::size_t{4}, std::size_t{7}}) {
    if (date[at] == ':' || date[at] == '/' || date[at] == '.') date[at] = '-';
  }
  const auto parsed = ParseDate(date);
  return parsed ? DateText(*parsed) : std::string();
}

Rate DecimalFraction(std::string_view text) {
  Rate value{0, 1};
  bool inFraction = false;
  bool any = false;
  for (const char c : Trimmed(text)) {
    if (c == '.' && !inFraction) {
      inFraction = true;
      continue;
    }
    if (!IsDigit(c)) return Rate();
    any = true;
    // Further digits exceed the precision of a fraction of 32-bit parts.
    if (value.num > 400'000'000) {
      if (!inFraction) return Rate();
      continue;
    }
    if (inFraction && value.den >= 100'000'000) continue;
    value.num = value.num * 10 + static_cast<std::uint64_t>(c - '0');
    if (inFraction) value.den *= 10;
  }
  return any ? value : Rate();
}

void SetCreators(TXMPMeta& meta, std::string_view names) {
  meta.DeleteProperty(kNsDC, "creator");
  while (!names.empty()) {
    const std::size_t end = std::min(names.find(';'), names.size());
    const std::string_view name = Trimmed(names.substr(0, end));
    if (!name.empty()) {
      meta.AppendArrayItem(kNsDC, "creator", ArrayForm::kSeq, std::string(name));
    }
    names.remove_prefix(std::min(end + 1, names.size()));
  }
}

void SetCopyright(TXMPMeta& meta, const std::string& text) {
  if (text.empty()) return;
  meta.SetLocalizedText(kNsDC, "rights", "x-default", text);
  meta.SetProperty(kNsDM, "copyright", text);
}

void SetSoftware(TXMPMeta& meta, const std::string& text) {
  meta.SetProperty(kNsXMP, "CreatorTool", text);
  meta.SetProperty(kNsTIFF, "software", text);
}

void SetFileDataRate(TXMPMeta& meta, std::uint64_t bytes, std::uint64_t duration,
                     std::uint64_t perSecond) {
  if (duration == 0 || perSecond == 0) return;
  const double seconds = static_cast<double>(duration) / static_cast<double>(perSecond);
  const double kilobytes = static_cast<double>(bytes) / 1000 / seconds;
  // A rate above 1 GB/s means that the duration is wrong.
  if (kilobytes < 1 || kilobytes > 1e6) return;
  meta.SetProperty(kNsDM, "fileDataRate",
                   std::to_string(static_cast<unsigned>(kilobytes + 0.5)) + "/1000");
}

void SetISO6709(TXMPMeta& meta, std::string_view text) {
  const std::string_view latitude = TakeNumber(text);
  const std::string_view longitude = TakeNumber(text);
  const std::string_view altitude = TakeNumber(text);
  SetCoordinate(meta, "GPSLatitude", latitude, 2, "NS");
  SetCoordinate(meta, "GPSLongitude", longitude, 3, "EW");
  if (altitude.size() < 2) return;
  const Rate height = DecimalFraction(altitude.substr(1));
  if (height.den == 0) return;
  meta.SetProperty(kNsEXIF, "GPSAltitude",
                   std::to_string(height.num) + "/" + std::to_string(height.den));
  meta.SetProperty(kNsEXIF, "GPSAltitudeRef", altitude[0] == '-' ? "1" : "0");
}

}  // namespace Sorvik::xmp
