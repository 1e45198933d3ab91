// SPDX-License-Identifier: MIT
// Reads bits of borrowed bytes, most significant first, including the variable-length codes of
// H.264. Reading past the end returns 0 and sets an error flag.
#pragma once

#include <cstdint>

#include "foundation/ByteReader.h"

namespace Sorvik::xmp {

class BitReader {
 public:
  explicit BitReader(foundation::ByteReader bytes) noexcept : bytes_(bytes) {}

  // False after a read past the end.
  bool Good() const noexcept { return good_; }

  // At most 32 bits.
  std::uint32_t Bits(unsigned count) noexcept {
    std::uint32_t value = 0;
    for (unsigned i = 0; i < count; ++i) value = value << 1 | Bit();
    return value;
  }
  bool Flag() noexcept { return Bit() != 0; }
  void Skip(unsigned count) noexcept {
    for (unsigned i = 0; i < count; ++i) Bit();
  }
  // Exp-Golomb codes, ue(v) and se(v) (ITU-T H.264, 9.1).
  std::uint32_t Unsigned() noexcept {
    unsigned zeros = 0;
    while (good_ && Bit() == 0) ++zeros;
    if (!good_ || zeros > 31) {
      good_ = false;
      return 0;
    }
    return (std::uint32_t{1} << zeros) - 1 + Bits(zeros);
  }
  std::int64_t Signed() noexcept {
    const std::int64_t code = Unsigned();
    return (code & 1) != 0 ? (code + 1) / 2 : -(code / 2);
  }

 private:
  std::uint32_t Bit() noexcept {
    const auto byte = bytes_.U8(at_ / 8);
    if (!byte) {
      good_ = false;
      return 0;
    }
    const std::uint32_t bit = *byte >> (7 - at_ % 8) & 1u;
    ++at_;
    return bit;
  }

  foundation::ByteReader bytes_;
  std::uint64_t at_ = 0;
  bool good_ = true;
};

}  // namespace Sorvik::xmp
