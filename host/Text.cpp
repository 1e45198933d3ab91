// SPDX-License-Identifier: MIT
#include "Text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <utility>

namespace host {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Unicode Standard Annex 11: the blocks of wide and full-width characters, and emoji.
constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0xA4CF},  {0xA960, 0xA97F}, {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},  {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F},
    {0x1F680, 0x1F6FF}, {0x1F900, 0x1FAFF}, {0x20000, 0x3FFFD}};
// Combining marks, joiners and variation selectors.
constexpr Range kZero[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x064B, 0x065F},
                           {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF},
                           {0x200B, 0x200F}, {0x20D0, 0x20FF}, {0x302A, 0x302D}, {0x3099, 0x309A},
                           {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}};

template <std::size_t N>
bool IsIn(const Range (&ranges)[N], char32_t character) {
  return std::any_of(std::begin(ranges), std::end(ranges), [&](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

bool IsControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

std::uint8_t ByteAt(std::string_view text, std::size_t index) {
  return static_cast<std::uint8_t>(text[index]);
}

}  // namespace

std::size_t DecodeUTF8(std::string_view text, char32_t& character) {
  constexpr char32_t kMinSize[] = {0, 0, 0x80, 0x800, 0x10000};
  if (text.empty()) return 0;
  const std::uint8_t first = ByteAt(text, 0);
  if (first < 0x80) {
    character = first;
    return 1;
  }
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || length > text.size()) return 0;
  char32_t value = first & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((ByteAt(text, i) & 0xC0) != 0x80) return 0;
    value = (value << 6) | (ByteAt(text, i) & 0x3FU);
  }
  if (value < kMinSize[length] || value > 0x10FFFF) return 0;
  if (value >= 0xD800 && value <= 0xDFFF) return 0;
  character = value;
  return length;
}

std::string EscapedForTerminal(std::string_view text) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string escaped;
  escaped.reserve(text.size());
  while (!text.empty()) {
    char32_t character = 0;
    const std::size_t decoded = DecodeUTF8(text, character);
    const std::size_t length = std::max<std::size_t>(decoded, 1);
    if (decoded != 0 && !IsControl(character)) {
      escaped += text.substr(0, length);
    } else {
      for (std::size_t i = 0; i < length; ++i) {
        const std::uint8_t byte = ByteAt(text, i);
        escaped += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xF]};
      }
    }
    text.remove_prefix(length);
  }
  return escaped;
}

std::size_t CellWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    char32_t character = 0;
    const std::size_t decoded = DecodeUTF8(text, character);
    if (!IsIn(kZero, character)) width += IsIn(kWide, character) ? 2U : 1U;
    text.remove_prefix(std::max<std::size_t>(decoded, 1));
  }
  return width;
}

std::string SizeText(unsigned long long bytes) {
  constexpr std::array kUnits = {"kB", "MB", "GB", "TB", "PB", "EB"};
  if (bytes < 1000) return std::to_string(bytes) + " B";
  double value = static_cast<double>(bytes) / 1000;
  std::size_t unit = 0;
  while (value >= 999.95 && unit + 1 < kUnits.size()) {
    value /= 1000;
    ++unit;
  }
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f %s", value, kUnits[unit]);
  return text.data();
}

std::string WithoutFraction(std::string_view text) {
  constexpr std::string_view kForm = "dddd-dd-dd dd:dd:dd.ddd";
  if (text.size() != kForm.size()) return std::string(text);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool digit = text[i] >= '0' && text[i] <= '9';
    if (kForm[i] == 'd' ? !digit : text[i] != kForm[i]) return std::string(text);
  }
  return std::string(text.substr(0, kForm.find('.')));
}

namespace {

// Returns the length in bytes of the first character; an invalid byte counts as one.
std::size_t FirstLength(std::string_view text) {
  char32_t character = 0;
  return std::max<std::size_t>(DecodeUTF8(text, character), 1);
}

// Returns the position up to which `text` fills at most `width` cells.
std::size_t PositionAt(std::string_view text, std::size_t width) {
  std::size_t position = 0;
  std::size_t used = 0;
  while (position < text.size()) {
    const std::size_t length = FirstLength(text.substr(position));
    used += CellWidth(text.substr(position, length));
    if (used > width) break;
    position += length;
  }
  return position;
}

}  // namespace

std::string ShortenedMiddle(const std::string& text, std::size_t width) {
  constexpr std::string_view kEllipsis = "\xE2\x80\xA6";
  const std::size_t all = CellWidth(text);
  if (all <= width) return text;
  if (width == 0) return {};
  const std::size_t head = (width - 1) / 2;
  const std::size_t tail = width - 1 - head;
  std::size_t start = PositionAt(text, all - tail);
  // A wide character in front of the tail doesn't fit completely.
  if (CellWidth(std::string_view(text).substr(start)) > tail) {
    start += FirstLength(std::string_view(text).substr(start));
  }
  return text.substr(0, PositionAt(text, head)) + std::string(kEllipsis) + text.substr(start);
}

std::vector<std::string> WrappedWords(const std::string& text, std::size_t width) {
  std::vector<std::string> lines;
  std::string line;
  std::string gap;  // in front of the next word
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find_first_of(" ;"), rest.size());
    const bool atItem = end < rest.size() && rest[end] == ';';
    const std::string word = gap + std::string(rest.substr(0, atItem ? end + 1 : end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (!line.empty() && CellWidth(line) + CellWidth(word) > width) {
      lines.push_back(std::exchange(line, word.substr(gap.size())));
    } else {
      line += line.empty() ? word.substr(gap.size()) : word;
    }
    gap = atItem ? "" : " ";
  }
  lines.push_back(line);
  return lines;
}

std::string WithoutUnit(const std::string& text) {
  const std::size_t digit = text.find_last_of("0123456789");
  return digit == std::string::npos ? text : text.substr(0, digit + 1);
}

std::string ShortLocalDate(const std::string& text) {
  std::tm parts{};
  int length = 0;
  const int read =
      std::sscanf(text.c_str(), "%4d-%2d-%2d%*1[T ]%2d:%2d%n", &parts.tm_year, &parts.tm_mon,
                  &parts.tm_mday, &parts.tm_hour, &parts.tm_min, &length);
  if (read != 5 || length == 0) return text;
  std::string_view rest = std::string_view(text).substr(static_cast<std::size_t>(length));
  rest.remove_prefix(std::min(rest.find_first_of("Z+-"), rest.size()));
  parts.tm_year -= 1900;
  parts.tm_mon -= 1;
  if (!rest.empty()) {
    int hours = 0;
    int minutes = 0;
    if (rest.front() != 'Z' &&
        std::sscanf(std::string(rest.substr(1)).c_str(), "%2d:%2d", &hours, &minutes) < 1) {
      return text;
    }
    constexpr int kMinutes = 60;
    const int offset = (hours * kMinutes + minutes) * (rest.front() == '-' ? -1 : 1);
    const std::time_t utc = timegm(&parts) - static_cast<std::time_t>(offset) * kMinutes;
    if (localtime_r(&utc, &parts) == nullptr) return text;
  }
  std::array<char, 32> formatted{};
  if (std::strftime(formatted.data(), formatted.size(), "%Y-%m-%d %H:%M", &parts) == 0) return text;
  return formatted.data();
}

std::string LowerAscii(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

double DurationSeconds(const std::string& text, double rate) {
  int hours = 0;
  int minutes = 0;
  int seconds = 0;
  int frames = 0;
  const int read =
      std::sscanf(text.c_str(), "%4d:%2d:%2d%*1[:;]%3d", &hours, &minutes, &seconds, &frames);
  if (read < 3) return 0;
  return (hours * 60.0 + minutes) * 60.0 + seconds + (rate > 0 ? frames / rate : 0);
}

std::string DurationText(double seconds) {
  const auto total = static_cast<long long>(seconds + 0.5);
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", total / 3600, total / 60 % 60,
                total % 60);
  return text.data();
}

}  // namespace host
