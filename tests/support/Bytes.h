// SPDX-License-Identifier: MIT
// Builds the bytes of a file field by field, big-endian unless the method's name ends in LE.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/ByteReader.h"

namespace sorvik_test {

class Bytes {
 public:
  Bytes() = default;
  explicit Bytes(std::string raw) : raw_(std::move(raw)) {}

  template <std::integral T>
  Bytes& U8(T v) {
    return Number(static_cast<std::uint64_t>(v), 1, true);
  }
  template <std::integral T>
  Bytes& U16(T v) {
    return Number(static_cast<std::uint64_t>(v), 2, true);
  }
  template <std::integral T>
  Bytes& U24(T v) {
    return Number(static_cast<std::uint64_t>(v), 3, true);
  }
  template <std::integral T>
  Bytes& U32(T v) {
    return Number(static_cast<std::uint64_t>(v), 4, true);
  }
  template <std::integral T>
  Bytes& U64(T v) {
    return Number(static_cast<std::uint64_t>(v), 8, true);
  }
  template <std::integral T>
  Bytes& U16LE(T v) {
    return Number(static_cast<std::uint64_t>(v), 2, false);
  }
  template <std::integral T>
  Bytes& U32LE(T v) {
    return Number(static_cast<std::uint64_t>(v), 4, false);
  }
  Bytes& Text(std::string_view text) {
    raw_.append(text);
    return *this;
  }
  // Pairs of hexadecimal digits; other characters are skipped.
  Bytes& Hex(std::string_view digits) {
    int high = -1;
    for (const char c : digits) {
      const int v = HexDigit(c);
      if (v < 0) continue;
      if (high < 0) {
        high = v;
      } else {
        raw_.push_back(static_cast<char>(high * 16 + v));
        high = -1;
      }
    }
    return *this;
  }
  Bytes& Fill(std::size_t count, unsigned value = 0) {
    raw_.append(count, static_cast<char>(value));
    return *this;
  }
  // Appends `value` up to a total of `size` bytes.
  Bytes& PadTo(std::size_t size, unsigned value = 0) {
    if (raw_.size() < size) Fill(size - raw_.size(), value);
    return *this;
  }
  Bytes& Add(const Bytes& other) { return Text(other.raw_); }
  // Overwrites `count` bytes at `at` with a number.
  Bytes& Set(std::size_t at, std::uint64_t v, std::size_t count) {
    Bytes number;
    number.Number(v, count, true);
    raw_.replace(at, count, number.raw_);
    return *this;
  }

  std::size_t size() const { return raw_.size(); }
  const std::string& str() const { return raw_; }
  Bytes Cut(std::size_t size) const { return Bytes(raw_.substr(0, size)); }
  // Not a copy: this object must outlive it.
  Sorvik::foundation::ByteReader Reader() const { return Sorvik::foundation::ReaderOf(raw_); }

 private:
  static int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
  }
  Bytes& Number(std::uint64_t v, std::size_t count, bool bigEndian) {
    for (std::size_t i = 0; i < count; ++i) {
      raw_.push_back(static_cast<char>(v >> (8 * (bigEndian ? count - 1 - i : i)) & 0xFF));
    }
    return *this;
  }

  std::string raw_;
};

// A file of the samples next to the source tree; nullopt if they are missing.
inline std::optional<std::string> ReadSample(std::string_view relative) {
  std::ifstream stream(std::string(SORVIK_SAMPLES_DIR "/").append(relative), std::ios::binary);
  if (!stream) return std::nullopt;
  return std::string{std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace sorvik_test
