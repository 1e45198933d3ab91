// SPDX-License-Identifier: MIT
#include <array>
#include <optional>

#include "formats/probe/Probes.h"

// Containers of small packets, frames or chunks: MPEG-2 transport streams (ISO/IEC 13818-1), RIFF,
// DV (IEC 61834), BMP, and the index files of AVCHD.
namespace Sorvik::formats::probe {
namespace {

using foundation::ByteReader;

constexpr std::uint8_t kSync = 0x47;
constexpr std::size_t kPacketBytes = 188;  // without a time stamp in front

// True if packets of that size begin at 0, with the sync byte at `offset` in each.
bool HasPackets(ByteReader head, std::size_t packet, std::size_t offset) {
  constexpr std::size_t kTestedPackets = 4;
  std::size_t found = 0;
  for (std::size_t i = 0; i < kTestedPackets && head.Holds(i * packet + offset, 1); ++i) {
    if (head.U8(i * packet + offset) != kSync) return false;
    ++found;
  }
  return found > 0;
}

// True if one of the last packets has its sync byte. The rest of a file whose copy was interrupted
// may be zeros.
bool HasPacketAtEnd(const RegularFile& file, std::size_t packet) {
  constexpr std::uint64_t kTestedPackets = 32;
  const std::uint64_t tested = std::min(kTestedPackets, file.Size() / packet);
  const auto bytes = ReadPart(file, file.Size() - tested * packet, tested * packet);
  const ByteReader tail{bytes};
  const std::size_t syncAt = packet - kPacketBytes;
  for (std::size_t i = 0; i < tested; ++i) {
    if (tail.U8(i * packet + syncAt) == kSync) return true;
  }
  return false;
}

constexpr int kMaxChunks = 64;

}  // namespace

MediaProbe ProbeTransportStream(const RegularFile& file) {
  constexpr std::size_t kWithTimestamp = 192;
  const auto bytes = ReadPart(file, 0, 4 * kWithTimestamp);
  const ByteReader head{bytes};
  std::size_t packet = 0;
  if (HasPackets(head, kWithTimestamp, 4)) {
    packet = kWithTimestamp;
  } else if (HasPackets(head, kPacketBytes, 0)) {
    packet = kPacketBytes;
  } else {
    return NotA("an MPEG transport stream");
  }
  if (file.Size() % packet != 0) {
    return Truncated("ends inside a packet of " + std::to_string(packet) + " bytes");
  }
  return HasPacketAtEnd(file, packet) ? Passed() : Truncated("no packets at its end");
}

MediaProbe ProbeRiff(const RegularFile& file) {
  const auto bytes = ReadPart(file, 0, 12);
  const ByteReader head{bytes};
  const bool isLarge = head.Matches(0, "RF64") || head.Matches(0, "BW64");
  const bool isWave = head.Matches(8, "WAVE");
  if (!isLarge && !head.Matches(0, "RIFF")) return NotA("a RIFF file");
  if (!isWave && !head.Matches(8, "AVI ")) return NotA("a WAV or AVI file");
  if (!isWave) {
    const std::uint64_t end = 8 + std::uint64_t{head.U32LE(4).value_or(0)};
    return end > file.Size() ? TooShort(file, end, "its RIFF header") : Passed();
  }
  std::uint64_t largeData = 0;
  std::uint64_t at = 12;
  for (int i = 0; i < kMaxChunks && at + 8 <= file.Size(); ++i) {
    const auto chunk = ReadPart(file, at, 24);
    const ByteReader reader{chunk};
    std::uint64_t size = reader.U32LE(4).value_or(0);
    if (reader.Matches(0, "ds64")) largeData = reader.U64LE(16).value_or(0);
    const bool isData = reader.Matches(0, "data");
    if (isData && isLarge && size == UINT32_MAX) size = largeData;
    // Recorders that are interrupted leave these sizes.
    if (isData && (size == 0 || size == UINT32_MAX)) return Passed();
    if (size > file.Size() - at - 8) {
      return TooShort(file, at + 8 + size, isData ? "the size of its sound" : "its chunks");
    }
    at += 8 + size + size % 2;
    if (isData) return Passed();
  }
  return Truncated("no chunk 'data'");
}

MediaProbe ProbeDV(const RegularFile& file) {
  const auto bytes = ReadPart(file, 0, 4);
  const ByteReader head{bytes};
  if (head.U8(0) != 0x1F || head.U8(1) != 0x07) return NotA("a DV file");
  const bool is50 = (head.U8(3).value_or(0) & 0x80U) != 0;
  const std::uint64_t frame = is50 ? 144000 : 120000;
  return file.Size() % frame == 0
             ? Passed()
             : Truncated("ends inside a frame of " + std::to_string(frame) + " bytes");
}

MediaProbe ProbeBmp(const RegularFile& file) {
  const auto bytes = ReadPart(file, 0, 6);
  const ByteReader head{bytes};
  if (!head.Matches(0, "BM")) return NotA("a BMP picture");
  const std::uint64_t size = head.U32LE(2).value_or(0);
  return size > file.Size() ? TooShort(file, size, "its header") : Passed();
}

// Playlists, clip information and the index have the same form: a type, then the offsets of blocks
// that begin with their length.
MediaProbe ProbeAvchdIndex(const RegularFile& file) {
  struct Type {
    std::string_view name;
    std::array<std::uint64_t, 5> offsetsAt;  // 0 for none
  };
  static constexpr Type kTypes[] = {{"MPLS", {8, 12, 16, 0, 0}},
                                    {"HDMV", {8, 12, 16, 20, 24}},
                                    {"INDX", {8, 12, 0, 0, 0}},
                                    {"MOBJ", {8, 0, 0, 0, 0}}};
  const auto bytes = ReadPart(file, 0, 64);
  const ByteReader head{bytes};
  const auto* const type = std::ranges::find_if(
      kTypes, [&head](const Type& known) { return head.Matches(0, known.name); });
  if (type == std::end(kTypes)) return NotA("an AVCHD index file");
  const std::uint64_t lastOffsetAt = *std::ranges::max_element(type->offsetsAt);
  if (!head.Holds(lastOffsetAt, 4)) return Truncated("ends inside the header");
  std::vector<std::uint64_t> blocks;
  for (const std::uint64_t at : type->offsetsAt) {
    if (at != 0 && head.U32BE(at).value_or(0) != 0) blocks.push_back(*head.U32BE(at));
  }
  for (const std::uint64_t block : blocks) {
    const auto lengthBytes = ReadPart(file, block, 4);
    const auto length = ByteReader{lengthBytes}.U32BE(0);
    const std::uint64_t end = block + 4 + length.value_or(0);
    if (!length || end > file.Size()) return TooShort(file, end, "its header");
  }
  return Passed();
}

}  // namespace Sorvik::formats::probe
