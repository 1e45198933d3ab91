// SPDX-License-Identifier: MIT
// A bounds-checked view of bytes. Doesn't own them. Loads return nullopt outside the view; no other
// code of the library does pointer arithmetic on the bytes of a file.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Sorvik::foundation {

class ByteReader {
 public:
  constexpr ByteReader() noexcept = default;
  constexpr explicit ByteReader(std::span<const std::byte> bytes) noexcept : bytes_(bytes) {}

  constexpr std::uint64_t Size() const noexcept { return bytes_.size(); }
  constexpr bool Empty() const noexcept { return bytes_.empty(); }
  constexpr std::span<const std::byte> Bytes() const noexcept { return bytes_; }

  // True if the view has `count` bytes at `offset`. Doesn't add them, so it can't overflow.
  constexpr bool Holds(std::uint64_t offset, std::uint64_t count) const noexcept {
    return offset <= bytes_.size() && count <= bytes_.size() - offset;
  }

  // A view of `count` bytes at `offset`; nullopt unless all of them exist.
  constexpr std::optional<ByteReader> Sub(std::uint64_t offset,
                                          std::uint64_t count) const noexcept {
    if (!Holds(offset, count)) return std::nullopt;
    return ByteReader(
        bytes_.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(count)));
  }
  // A view of at most `count` bytes at `offset`, truncated at the end; empty past the end.
  constexpr ByteReader Clip(std::uint64_t offset, std::uint64_t count = UINT64_MAX) const noexcept {
    if (offset >= bytes_.size()) return ByteReader();
    const std::uint64_t rest = bytes_.size() - offset;
    return ByteReader(bytes_.subspan(static_cast<std::size_t>(offset),
                                     static_cast<std::size_t>(count < rest ? count : rest)));
  }
  // The N bytes at `offset` as a span of fixed size; nullopt unless all of them exist.
  template <std::size_t N>
  constexpr std::optional<std::span<const std::byte, N>> ViewAt(
      std::uint64_t offset) const noexcept {
    if (!Holds(offset, N)) return std::nullopt;
    return bytes_.subspan(static_cast<std::size_t>(offset)).template first<N>();
  }

  constexpr std::optional<std::uint8_t> U8(std::uint64_t offset) const noexcept {
    return Load<std::uint8_t, 1, true>(offset);
  }
  constexpr std::optional<std::uint16_t> U16BE(std::uint64_t offset) const noexcept {
    return Load<std::uint16_t, 2, true>(offset);
  }
  constexpr std::optional<std::uint16_t> U16LE(std::uint64_t offset) const noexcept {
    return Load<std::uint16_t, 2, false>(offset);
  }
  constexpr std::optional<std::uint32_t> U24BE(std::uint64_t offset) const noexcept {
    return Load<std::uint32_t, 3, true>(offset);
  }
  constexpr std::optional<std::uint32_t> U32BE(std::uint64_t offset) const noexcept {
    return Load<std::uint32_t, 4, true>(offset);
  }
  constexpr std::optional<std::uint32_t> U32LE(std::uint64_t offset) const noexcept {
    return Load<std::uint32_t, 4, false>(offset);
  }
  constexpr std::optional<std::uint64_t> U64BE(std::uint64_t offset) const noexcept {
    return Load<std::uint64_t, 8, true>(offset);
  }
  constexpr std::optional<std::uint64_t> U64LE(std::uint64_t offset) const noexcept {
    return Load<std::uint64_t, 8, false>(offset);
  }
  // The same with the byte order chosen at run time, as in TIFF.
  constexpr std::optional<std::uint16_t> U16(std::uint64_t offset, bool bigEndian) const noexcept {
    return bigEndian ? U16BE(offset) : U16LE(offset);
  }
  constexpr std::optional<std::uint32_t> U32(std::uint64_t offset, bool bigEndian) const noexcept {
    return bigEndian ? U32BE(offset) : U32LE(offset);
  }
  constexpr std::optional<std::uint64_t> U64(std::uint64_t offset, bool bigEndian) const noexcept {
    return bigEndian ? U64BE(offset) : U64LE(offset);
  }

  // True if the bytes at `offset` equal `text`.
  bool Matches(std::uint64_t offset, std::string_view text) const noexcept {
    const auto part = Sub(offset, text.size());
    return part && part->Text() == text;
  }
  // All bytes as text, not copied.
  std::string_view Text() const noexcept {
    return {reinterpret_cast<const char*>(bytes_.data()), bytes_.size()};
  }
  // The `count` bytes at `offset` as text, not copied; empty unless all of them exist.
  std::string_view TextAt(std::uint64_t offset, std::uint64_t count) const noexcept {
    const auto part = Sub(offset, count);
    return part ? part->Text() : std::string_view();
  }
  // The same up to the first NUL.
  std::string_view CStringAt(std::uint64_t offset, std::uint64_t count) const noexcept {
    const std::string_view text = TextAt(offset, count);
    return text.substr(0, text.find('\0'));
  }

 private:
  template <class T, std::size_t N, bool kBigEndian>
  constexpr std::optional<T> Load(std::uint64_t offset) const noexcept {
    const auto view = ViewAt<N>(offset);
    if (!view) return std::nullopt;
    T value = 0;
    for (std::size_t i = 0; i < N; ++i) {
      const std::size_t shift = 8 * (kBigEndian ? N - 1 - i : i);
      value = static_cast<T>(value | (static_cast<T>(std::to_integer<T>((*view)[i])) << shift));
    }
    return value;
  }

  std::span<const std::byte> bytes_;
};

inline ByteReader ReaderOf(std::string_view text) noexcept {
  return ByteReader(std::as_bytes(std::span(text.data(), text.size())));
}

}  // namespace Sorvik::foundation
