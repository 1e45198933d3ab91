// SPDX-License-Identifier: MIT
// Builds the boxes of ISO base media files.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/Bytes.h"

namespace sorvik_test {

inline Bytes Box(const std::string& type, const Bytes& body) {
  return Bytes().U32(body.size() + 8).Text(type).Add(body);
}
inline Bytes Box(const std::string& type, const std::vector<Bytes>& inside) {
  Bytes body;
  for (const Bytes& box : inside) body.Add(box);
  return Box(type, body);
}

inline constexpr std::uint32_t k2021 = 3697679167;  // 2021-03-04T05:06:07Z, in seconds since 1904

inline Bytes MovieHeader(std::uint32_t timescale, std::uint32_t duration) {
  Bytes b;
  b.U32(0).U32(k2021).U32(k2021 + 1);  // version and flags, created, modified
  return Box("mvhd", b.U32(timescale).U32(duration).Fill(80));
}
inline Bytes TrackHeader(std::uint32_t width, std::uint32_t height) {
  return Box("tkhd", Bytes().U32(1).Fill(72).U32(width << 16).U32(height << 16));
}
inline Bytes MediaHeader(std::uint32_t timescale, std::uint32_t duration) {
  return Box("mdhd", Bytes().U32(0).U64(0).U32(timescale).U32(duration).U32(0));
}
inline Bytes Handler(const std::string& type) {
  return Box("hdlr", Bytes().U64(0).Text(type).Fill(13));
}

inline Bytes VideoEntry(const std::string& codec, unsigned width, unsigned height,
                        const std::vector<Bytes>& boxes = {}) {
  Bytes b;
  b.Fill(6).U16(1).Fill(16);        // reserved, data reference, version to spatial quality
  b.U16(width).U16(height).U64(0);  // size, resolution
  b.U32(0).U16(1).Fill(32).U16(24).U16(0xFFFF);  // frames per sample, name, depth, colour table
  for (const Bytes& box : boxes) b.Add(box);
  return Box(codec, b);
}
inline Bytes SoundEntry(const std::string& codec, unsigned channels, unsigned bits,
                        std::uint32_t rate, const Bytes& boxes = {}) {
  Bytes b;
  b.Fill(6).U16(1).U64(0);  // reserved, data reference, version, revision, vendor
  return Box(codec, b.U16(channels).U16(bits).U32(0).U32(rate << 16).Add(boxes));
}
inline Bytes TimecodeEntry(bool drop, std::uint32_t scale, std::uint32_t units, unsigned base) {
  Bytes b;
  b.Fill(6).U16(1).U32(0).U32(drop ? 1 : 0).U32(scale).U32(units).U8(base).U8(0);
  return Box("tmcd", b.Add(Box("name", Bytes().U16(5).U16(0).Text("A001C"))));
}
inline Bytes Descriptions(const Bytes& entry) {
  return Box("stsd", Bytes().U32(0).U32(1).Add(entry));
}
inline Bytes Durations(const std::vector<std::pair<std::uint32_t, std::uint32_t>>& entries) {
  Bytes b;
  b.U32(0).U32(entries.size());
  for (const auto& [count, units] : entries) b.U32(count).U32(units);
  return Box("stts", b);
}
inline Bytes Sizes(std::uint32_t samples) {
  return Box("stsz", Bytes().U32(0).U32(0).U32(samples));
}
inline Bytes Chunks(std::uint32_t first) { return Box("stco", Bytes().U32(0).U32(1).U32(first)); }

inline Bytes Track(const std::string& handler, const Bytes& mediaHeader,
                   const std::vector<Bytes>& tables, const Bytes& header = TrackHeader(0, 0)) {
  return Box(
      "trak",
      {header, Box("mdia", {mediaHeader, Handler(handler), Box("minf", {Box("stbl", tables)})})});
}
inline Bytes FileType() { return Box("ftyp", Bytes().Text("mp42").U32(0).Text("mp42")); }

}  // namespace sorvik_test
