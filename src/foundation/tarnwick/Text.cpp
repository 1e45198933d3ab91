// SPDX-License-Identifier: MIT
#include "foundation/tarnwick/Text.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>

namespace tarnwick::utility {
namespace {

constexpr char16_t kEscapeBase = 0xDC00;  // + byte: a byte that is no part of valid UTF-8

constexpr bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool IsLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
constexpr bool IsEscape(char16_t unit) { return unit >= 0xDC80 && unit <= 0xDCFF; }

struct Decoded {
  char32_t point;
  std::size_t length;
};

// The code point at the start of `text`; nothing if the bytes there are no valid UTF-8 (over-long
// forms, surrogates and values above U+10FFFF included).
std::optional<Decoded> DecodePoint(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return Decoded{lead, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return std::nullopt;
  char32_t point = lead & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return std::nullopt;
    point = (point << 6) | (byte(i) & 0x3Fu);
  }
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = point >= 0xD800 && point <= 0xDFFF;
  if (point < kLeast[length] || point > 0x10FFFF || surrogate) return std::nullopt;
  return Decoded{point, length};
}

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

std::size_t FirstDifference(std::string_view a, std::string_view b) {
  const std::size_t shorter = std::min(a.size(), b.size());
  std::size_t i = 0;
  for (; shorter - i >= sizeof(std::uint64_t); i += sizeof(std::uint64_t)) {
    std::uint64_t wordA;
    std::uint64_t wordB;
    std::memcpy(&wordA, a.data() + i, sizeof(wordA));
    std::memcpy(&wordB, b.data() + i, sizeof(wordB));
    if (wordA != wordB) break;
  }
  while (i < shorter && a[i] == b[i]) ++i;
  return i;
}

bool LessByCodeUnits(std::string_view a, std::string_view b) {
  const std::size_t common = FirstDifference(a, b);
  if (common == a.size() || common == b.size()) return a.size() < b.size();
  const auto byteA = static_cast<unsigned char>(a[common]);
  const auto byteB = static_cast<unsigned char>(b[common]);
  if (byteA < 0x80 && byteB < 0x80) return byteA < byteB;
  return UTF8to16(a) < UTF8to16(b);
}

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
