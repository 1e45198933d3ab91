// SPDX-License-Identifier: MIT
#include "formats/TiffLayout.h"
#include "formats/probe/Probes.h"

// Raw frames and raw recordings. Facts: SMPTE RDD 30 (ARI), DNG 1.4, and what public decoders agree
// on for RMF and R3D.
namespace Sorvik::formats::probe {
namespace {

using foundation::ByteReader;

constexpr std::size_t kHeadBytes = 4096;

}  // namespace

MediaProbe ProbeAri(const RegularFile& file) {
  const auto bytes = ReadPart(file, 0, kHeadBytes);
  const ByteReader head{bytes};
  if (!head.Matches(0, "ARRI")) return NotA("an ARRIRAW frame");
  const auto headerSize = head.U32LE(0x008);
  const auto width = head.U32LE(0x014);
  const auto height = head.U32LE(0x018);
  if (!headerSize || !width || !height) return Truncated("ends inside the header");
  // 12 bits a photosite.
  const std::uint64_t pixels = std::uint64_t{*width} * *height;
  const std::uint64_t end = *headerSize + pixels * 12 / 8;
  return end > file.Size() ? TooShort(file, end, "its header") : Passed();
}

MediaProbe ProbeRmf(const RegularFile& file) {
  const auto bytes = ReadPart(file, 0, kHeadBytes);
  const ByteReader head{bytes};
  if (!head.Matches(0, "XPDS")) return NotA("a Canon RAW frame");
  const auto height = head.U16LE(0x829);
  const auto width = head.U16LE(0x82B);
  if (!height || !width) return Truncated("ends inside the header");
  // Three photosites in four bytes, after 64 KiB.
  const std::uint64_t end = 0x10000 + std::uint64_t{*width} * *height / 3 * 4;
  return end > file.Size() ? TooShort(file, end, "its header") : Passed();
}

MediaProbe ProbeDng(const RegularFile& file) {
  const auto layout = ReadTiffLayout(file);
  if (!layout) return NotA("a DNG file");
  return layout->end > file.Size() ? TooShort(file, layout->end, "its directory") : Passed();
}

// A chain of blocks, each with its size and type. Files of the first cameras end with a block that
// contains the offsets of the others.
MediaProbe ProbeR3d(const RegularFile& file) {
  constexpr std::uint64_t kEndBlockBytes = 56;
  constexpr std::uint64_t kAlignment = 0x1000;
  constexpr int kMaxBlocks = 16384;  // some 4 GB of frames
  const auto bytes = ReadPart(file, 0, 8);
  const ByteReader head{bytes};
  const bool isFirst = head.Matches(4, "RED1");
  if (!isFirst && !head.Matches(4, "RED2")) return NotA("an R3D file");
  std::uint64_t at = 0;
  for (int i = 0; i < (isFirst ? 2 : kMaxBlocks) && at < file.Size(); ++i) {
    const auto block = ReadPart(file, at, 8);
    const ByteReader reader{block};
    const auto size = reader.U32BE(0);
    const std::string_view type = reader.TextAt(4, 4);
    if (!size || type.size() != 4) return Truncated("ends inside the head of a block");
    if (*size < 8 || !type.starts_with('R')) return Passed();  // padding
    if (*size > file.Size() - at) {
      return TooShort(file, at + *size, ("its block " + std::string(type)).c_str());
    }
    at += *size;
    if (!isFirst) at = (at + kAlignment - 1) / kAlignment * kAlignment;
  }
  if (!isFirst || at >= file.Size()) return Passed();
  const auto tail = ReadPart(file, file.Size() - kEndBlockBytes, kEndBlockBytes);
  const ByteReader end{tail};
  const bool closed = end.U32BE(0) == kEndBlockBytes && end.Matches(4, "REO");
  return closed ? Passed() : Truncated("the block at its end is missing");
}

}  // namespace Sorvik::formats::probe
