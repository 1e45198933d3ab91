// SPDX-License-Identifier: MIT
#include "foundation/XmlEncoding.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <memory>

#include "foundation/ByteReader.h"
#include "foundation/tarnwick/Text.h"

namespace Sorvik::foundation {
namespace {

struct Encoding {
  std::size_t unit;  // size of a code unit in bytes
  bool bigEndian;
  std::size_t mark;  // size of the byte order mark in bytes
};

Encoding Detect(std::string_view bytes) {
  using namespace std::string_view_literals;
  struct Pattern {
    std::string_view start;
    Encoding encoding;
  };
  // UTF-32 marks begin like UTF-16 marks, so they come first.
  static constexpr Pattern kMarks[] = {
      {"\xEF\xBB\xBF"sv, {1, false, 3}}, {"\xFF\xFE\0\0"sv, {4, false, 4}},
      {"\0\0\xFE\xFF"sv, {4, true, 4}},  {"\xFF\xFE"sv, {2, false, 2}},
      {"\xFE\xFF"sv, {2, true, 2}},      {"<\0\0\0"sv, {4, false, 0}},
      {"\0\0\0<"sv, {4, true, 0}},       {"<\0"sv, {2, false, 0}},
      {"\0<"sv, {2, true, 0}},
  };
  for (const Pattern& pattern : kMarks) {
    if (bytes.starts_with(pattern.start)) return pattern.encoding;
  }
  return {1, false, 0};
}

bool IsValidUTF8(std::string_view bytes) {
  // The conversion represents invalid bytes as lone surrogates.
  const Hestra::UTF16String units = tarnwick::utility::UTF8to16(bytes);
  for (std::size_t i = 0; i < units.size(); ++i) {
    const bool high = units[i] >= 0xD800 && units[i] <= 0xDBFF;
    if (high) {
      ++i;
    } else if (units[i] >= 0xDC00 && units[i] <= 0xDFFF) {
      return false;
    }
  }
  return true;
}

std::string FromLatin1(std::string_view bytes) {
  return tarnwick::utility::UTF16to8(tarnwick::utility::AsciiToUTF16(bytes));
}

// The encoding in the XML declaration; empty if there is none.
std::string DeclaredEncoding(std::string_view bytes) {
  if (!bytes.starts_with("<?xml")) return {};
  const std::string_view declaration = bytes.substr(0, bytes.find("?>"));
  constexpr std::string_view kName = "encoding";
  auto at = declaration.find(kName);
  if (at == declaration.npos) return {};
  at = declaration.find_first_of("\"'", at + kName.size());
  if (at == declaration.npos) return {};
  const auto end = declaration.find(declaration[at], at + 1);
  return std::string(declaration.substr(at + 1, end == declaration.npos ? 0 : end - at - 1));
}

struct CloseConverter {
  void operator()(UConverter* converter) const noexcept { ucnv_close(converter); }
};

// Decodes text that isn't UTF-8 by the encoding that it declares, such as Shift_JIS; as Latin-1 if
// it declares none that is supported.
std::string FromDeclared(std::string_view bytes) {
  const std::string name = DeclaredEncoding(bytes);
  if (name.empty()) return FromLatin1(bytes);
  UErrorCode error = U_ZERO_ERROR;
  const std::unique_ptr<UConverter, CloseConverter> converter(ucnv_open(name.c_str(), &error));
  if (U_FAILURE(error) || ucnv_getType(converter.get()) == UCNV_UTF8) return FromLatin1(bytes);
  Hestra::UTF16String units(bytes.size() * 2, u'\0');
  const auto length =
      ucnv_toUChars(converter.get(), units.data(), static_cast<std::int32_t>(units.size()),
                    bytes.data(), static_cast<std::int32_t>(bytes.size()), &error);
  if (U_FAILURE(error)) return FromLatin1(bytes);
  units.resize(static_cast<std::size_t>(length));
  return tarnwick::utility::UTF16to8(units);
}

std::string FromUnits(std::string_view bytes, const Encoding& encoding) {
  const ByteReader reader = ReaderOf(bytes);
  Hestra::UTF16String units;
  units.reserve(bytes.size() / encoding.unit);
  for (std::uint64_t at = 0; reader.Holds(at, encoding.unit); at += encoding.unit) {
    if (encoding.unit == 2) {
      units.push_back(*reader.U16(at, encoding.bigEndian));
      continue;
    }
    const char32_t point = *reader.U32(at, encoding.bigEndian);
    if (point < 0x10000) {
      units.push_back(static_cast<char16_t>(point));
    } else if (point <= 0x10FFFF) {
      units.push_back(static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10)));
      units.push_back(static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF)));
    } else {
      units.push_back(0xFFFD);
    }
  }
  // Unpaired surrogates have no UTF-8 form.
  for (std::size_t i = 0; i < units.size(); ++i) {
    const bool high = units[i] >= 0xD800 && units[i] <= 0xDBFF;
    const bool paired =
        high && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF;
    if (paired) {
      ++i;
    } else if (units[i] >= 0xD800 && units[i] <= 0xDFFF) {
      units[i] = 0xFFFD;
    }
  }
  return tarnwick::utility::UTF16to8(units);
}

bool IsForbidden(std::uint32_t point) {
  return point < 0x20 && point != '\t' && point != '\n' && point != '\r';
}

// Returns the length of a character reference such as "&#x1F;" at the start of `text` that refers
// to a forbidden control character; 0 if there is none.
std::size_t ForbiddenReferenceLength(std::string_view text) {
  constexpr std::size_t kMaxReferenceLength = 12;
  if (!text.starts_with("&#")) return 0;
  const auto end = text.substr(0, kMaxReferenceLength).find(';');
  if (end == text.npos) return 0;
  const bool hex = text.size() > 2 && (text[2] == 'x' || text[2] == 'X');
  const std::string_view digits = text.substr(hex ? 3 : 2, end - (hex ? 3 : 2));
  std::uint32_t point = 0;
  const auto [stop, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), point, hex ? 16 : 10);
  const bool valid = error == std::errc() && stop == digits.data() + digits.size();
  return valid && IsForbidden(point) ? end + 1 : 0;
}

void ReplaceForbiddenCharacters(std::string& text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsForbidden(static_cast<unsigned char>(text[i]))) text[i] = ' ';
    if (text[i] != '&') continue;
    const std::size_t length = ForbiddenReferenceLength(std::string_view(text).substr(i));
    std::fill_n(text.begin() + static_cast<std::ptrdiff_t>(i), length, ' ');
  }
}

}  // namespace

std::string ToUTF8(std::string_view bytes) {
  const Encoding encoding = Detect(bytes);
  const std::string_view text = bytes.substr(encoding.mark);
  std::string utf8;
  if (encoding.unit > 1) {
    utf8 = FromUnits(text, encoding);
  } else {
    utf8 = IsValidUTF8(text) ? std::string(text) : FromDeclared(text);
  }
  ReplaceForbiddenCharacters(utf8);
  return utf8;
}

}  // namespace Sorvik::foundation
