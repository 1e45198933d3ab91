// SPDX-License-Identifier: MIT
// A borrowed, bounds-checked view of bytes. It never owns: whoever made the bytes keeps them alive.
// Every load says whether it could be made; nothing else in the library does arithmetic on the
// addresses of a file's bytes.
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

  // True if `count` bytes stand at `offset`. Never adds the two, so no sum can wrap.
  constexpr bool Holds(std::uint64_t offset, std::uint64_t count) const noexcept {
    return offset <= bytes_.size() && count <= bytes_.size() - offset;
  }

  // A child that cannot see past its own bytes; nothing if they aren't all there.
  constexpr std::optional<ByteReader> Sub(std::uint64_t offset,
                                          std::uint64_t count) const noexcept {
    if (!Holds(offset, count)) return std::nullopt;
    return ByteReader(
        bytes_.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(count)));
  }
  // What stands at `offset` and behind it, at most `count` bytes; empty past the end.
  constexpr ByteReader Clip(std::uint64_t offset, std::uint64_t count = UINT64_MAX) const noexcept {
    if (offset >= bytes_.size()) return ByteReader();
    const std::uint64_t rest = bytes_.size() - offset;
    return ByteReader(bytes_.subspan(static_cast<std::size_t>(offset),
                                     static_cast<std::size_t>(count < rest ? count : rest)));
  }
  // The N bytes at `offset`: one check, after which the compiler knows the size.
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
  // The same with the order of bytes chosen at run time, as TIFF needs it.
  constexpr std::optional<std::uint16_t> U16(std::uint64_t offset, bool bigEndian) const noexcept {
    return bigEndian ? U16BE(offset) : U16LE(offset);
  }
  constexpr std::optional<std::uint32_t> U32(std::uint64_t offset, bool bigEndian) const noexcept {
    return bigEndian ? U32BE(offset) : U32LE(offset);
  }
  constexpr std::optional<std::uint64_t> U64(std::uint64_t offset, bool bigEndian) const noexcept {
    return bigEndian ? U64BE(offset) : U64LE(offset);
  }

  // True if the bytes at `offset` are those of `text`.
  bool Matches(std::uint64_t offset, std::string_view text) const noexcept {
    const auto part = Sub(offset, text.size());
    return part && part->Text() == text;
  }
  // All bytes as text, borrowed.
  std::string_view Text() const noexcept {
    return {reinterpret_cast<const char*>(bytes_.data()), bytes_.size()};
  }
  // The bytes at `offset` as text, borrowed; empty if they aren't all there.
  std::string_view TextAt(std::uint64_t offset, std::uint64_t count) const noexcept {
    const auto part = Sub(offset, count);
    return part ? part->Text() : std::string_view();
  }
  // The same, ended by the first NUL.
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
