// SPDX-License-Identifier: MIT
#include "foundation/platform/NameOrder.h"

#include <cstring>

#include "foundation/platform/Utf8.h"

namespace Sorvik::platform {
namespace {

// The code point at the start of `text`; an invalid byte becomes its escape.
DecodedPoint NextPoint(std::string_view text) {
  if (const auto decoded = DecodePoint(text)) return *decoded;
  return {kEscapeBase + char32_t{static_cast<unsigned char>(text.front())}, 1};
}

// The first UTF-16 code unit of a code point.
char32_t FirstUnit(char32_t point) {
  return point < 0x10000 ? point : 0xD800 + ((point - 0x10000) >> 10);
}

}  // namespace

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
  // Decode from the start: whether a byte is valid depends on the bytes in front of it.
  while (!a.empty() && !b.empty()) {
    const DecodedPoint pointA = NextPoint(a);
    const DecodedPoint pointB = NextPoint(b);
    if (pointA.point != pointB.point) {
      const char32_t unitA = FirstUnit(pointA.point);
      const char32_t unitB = FirstUnit(pointB.point);
      return unitA != unitB ? unitA < unitB : pointA.point < pointB.point;
    }
    a.remove_prefix(pointA.length);
    b.remove_prefix(pointB.length);
  }
  return a.size() < b.size();
}

}  // namespace Sorvik::platform
