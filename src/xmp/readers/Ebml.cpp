// SPDX-License-Identifier: MIT
#include "xmp/readers/Ebml.h"

#include <algorithm>
#include <bit>

#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

constexpr std::uint64_t kMaxTextBytes = 64 * 1024;

// A number whose length in bytes is one more than its leading zero bits.
struct VariableNumber {
  std::uint64_t value = 0;  // without the length marker
  unsigned width = 0;
};

std::optional<VariableNumber> ReadVariable(ByteReader bytes, std::uint64_t at, unsigned maxWidth) {
  const auto first = bytes.U8(at);
  if (!first || *first == 0) return std::nullopt;
  VariableNumber number;
  number.width = static_cast<unsigned>(std::countl_zero(*first)) + 1;
  if (number.width > maxWidth || !bytes.Holds(at, number.width)) return std::nullopt;
  number.value = *first & (0xFFu >> number.width);
  for (unsigned i = 1; i < number.width; ++i) {
    number.value = number.value << 8 | bytes.U8(at + i).value_or(0);
  }
  return number;
}

}  // namespace

std::optional<EbmlElement> EbmlElements::Next() {
  constexpr unsigned kMaxIdWidth = 4;
  constexpr unsigned kMaxSizeWidth = 8;
  if (next_ >= end_ || ++elements_ > kMaxElements) return std::nullopt;
  const ByteReader header = file_.At(next_, kMaxIdWidth + kMaxSizeWidth);
  const auto id = ReadVariable(header, 0, kMaxIdWidth);
  if (!id) return std::nullopt;
  const auto size = ReadVariable(header, id->width, kMaxSizeWidth);
  if (!size) return std::nullopt;
  EbmlElement element;
  element.id = static_cast<std::uint32_t>(id->value | std::uint64_t{1} << (7 * id->width));
  element.body = next_ + id->width + size->width;
  if (element.body > end_) return std::nullopt;
  const std::uint64_t rest = end_ - element.body;
  element.unknownSize = size->value == (std::uint64_t{1} << (7 * size->width)) - 1;
  element.end = element.body + (element.unknownSize ? rest : std::min(size->value, rest));
  next_ = element.end;
  return element;
}

std::uint64_t EbmlUnsigned(FileWindow& file, const EbmlElement& element) {
  if (element.Size() > 8) return 0;
  const ByteReader bytes = file.At(element.body, element.Size());
  std::uint64_t value = 0;
  for (std::uint64_t i = 0; i < element.Size(); ++i) value = value << 8 | bytes.U8(i).value_or(0);
  return value;
}

double EbmlFloat(FileWindow& file, const EbmlElement& element) {
  const ByteReader bytes = file.At(element.body, 8);
  if (element.Size() == 4) return std::bit_cast<float>(bytes.U32BE(0).value_or(0));
  if (element.Size() == 8) return std::bit_cast<double>(bytes.U64BE(0).value_or(0));
  return 0;
}

std::string EbmlText(FileWindow& file, const EbmlElement& element) {
  return NativeText(file.At(element.body, std::min(element.Size(), kMaxTextBytes)).Text());
}

}  // namespace Sorvik::xmp
