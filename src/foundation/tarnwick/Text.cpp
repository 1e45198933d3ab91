// SPDX-License-Identifier: MIT
#include "foundation/tarnwick/Text.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <charconv>

#include "foundation/platform/Utf8.h"

namespace tarnwick::utility {
namespace {

using Sorvik::platform::DecodePoint;
using Sorvik::platform::kEscapeBase;

constexpr bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool IsLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
constexpr bool IsEscape(char16_t unit) { return unit >= 0xDC80 && unit <= 0xDCFF; }

void AppendUnits(UTF16String& out, char32_t point) {
  if (point < 0x10000) {
    out.push_back(static_cast<char16_t>(point));
    return;
  }
  point -= 0x10000;
  out.push_back(static_cast<char16_t>(0xD800 + (point >> 10)));
  out.push_back(static_cast<char16_t>(0xDC00 + (point & 0x3FF)));
}

void AppendBytes(std::string& out, char32_t point) {
  const auto put = [&](char32_t value) { out.push_back(static_cast<char>(value)); };
  if (point < 0x80) {
    put(point);
  } else if (point < 0x800) {
    put(0xC0 | (point >> 6));
    put(0x80 | (point & 0x3F));
  } else if (point < 0x10000) {
    put(0xE0 | (point >> 12));
    put(0x80 | ((point >> 6) & 0x3F));
    put(0x80 | (point & 0x3F));
  } else {
    put(0xF0 | (point >> 18));
    put(0x80 | ((point >> 12) & 0x3F));
    put(0x80 | ((point >> 6) & 0x3F));
    put(0x80 | (point & 0x3F));
  }
}

constexpr char32_t Combine(char16_t high, char16_t low) {
  return 0x10000 + ((static_cast<char32_t>(high) - 0xD800) << 10) +
         (static_cast<char32_t>(low) - 0xDC00);
}

template <class Map>
UTF16String MapPoints(std::u16string_view text, Map map) {
  UTF16String out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i];
    const bool paired = IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]);
    if (paired) {
      AppendUnits(out, static_cast<char32_t>(map(static_cast<UChar32>(Combine(unit, text[++i])))));
    } else if (unit >= 0xD800 && unit <= 0xDFFF) {
      out.push_back(unit);
    } else {
      AppendUnits(out, static_cast<char32_t>(map(static_cast<UChar32>(unit))));
    }
  }
  return out;
}

}  // namespace

UTF16String UTF8to16(std::string_view utf8) {
  UTF16String out;
  out.reserve(utf8.size());
  while (!utf8.empty()) {
    const auto decoded = DecodePoint(utf8);
    if (decoded) {
      AppendUnits(out, decoded->point);
    } else {
      out.push_back(static_cast<char16_t>(kEscapeBase + static_cast<unsigned char>(utf8[0])));
    }
    utf8.remove_prefix(decoded ? decoded->length : 1);
  }
  return out;
}

std::string UTF16to8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i];
    if (IsHighSurrogate(unit)) {
      if (i + 1 == text.size() || !IsLowSurrogate(text[i + 1])) return {};
      AppendBytes(out, Combine(unit, text[++i]));
    } else if (IsEscape(unit)) {
      out.push_back(static_cast<char>(unit - kEscapeBase));
    } else if (IsLowSurrogate(unit)) {
      return {};
    } else {
      AppendBytes(out, unit);
    }
  }
  return out;
}

UTF16String AsciiToUTF16(std::string_view ascii) {
  UTF16String out(ascii.size(), u'\0');
  std::transform(ascii.begin(), ascii.end(), out.begin(),
                 [](char c) { return static_cast<char16_t>(static_cast<unsigned char>(c)); });
  return out;
}

UTF16String FoldCase(std::u16string_view text) {
  return MapPoints(text, [](UChar32 point) { return u_foldCase(point, U_FOLD_CASE_DEFAULT); });
}

UTF16String LowerCase(std::u16string_view text) { return MapPoints(text, u_tolower); }

UTF16String UpperCase(std::u16string_view text) { return MapPoints(text, u_toupper); }

bool StringToNumber(std::u16string_view text, int& number) noexcept {
  char digits[24];
  if (text.size() > sizeof(digits)) return false;
  std::size_t count = 0;
  for (const char16_t unit : text) {
    if (unit > 0x7F) return false;
    digits[count++] = static_cast<char>(unit);
  }
  const char* begin = digits;
  if (count > 1 && digits[0] == '+' && digits[1] != '-') ++begin;
  int value = 0;
  const auto [end, error] = std::from_chars(begin, digits + count, value);
  if (error != std::errc() || end != digits + count) return false;
  number = value;
  return true;
}

}  // namespace tarnwick::utility

namespace Hestra {

UTF16String MakeString(std::string_view utf8) { return tarnwick::utility::UTF8to16(utf8); }

std::string MakeStdString(std::u16string_view text) { return tarnwick::utility::UTF16to8(text); }

}  // namespace Hestra
