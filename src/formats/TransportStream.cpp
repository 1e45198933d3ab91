// SPDX-License-Identifier: MIT
#include "formats/TransportStream.h"

#include <algorithm>
#include <map>

namespace Sorvik::formats::ts {

namespace {

constexpr std::uint64_t kPacketSize = 188;
constexpr std::uint8_t kSync = 0x47;
constexpr std::uint16_t kNullPID = 0x1FFF;
// The standard limits these tables to 1021 bytes, private sections to 4093.
constexpr std::size_t kMaxSectionBytes = 4096;
constexpr std::size_t kMaxPrograms = 16;
constexpr std::size_t kMaxStreams = 64;
constexpr std::uint32_t kHDMV = 0x48444D56;

// Counts the consecutive complete packets from `start` on that have a sync byte.
std::uint64_t CountPackets(ByteReader head, std::uint64_t start, std::uint64_t stride) {
  std::uint64_t run = 0;
  constexpr std::uint64_t kMaxCount = 64;
  for (std::uint64_t at = start; run < kMaxCount && head.U8(at) == kSync; at += stride) {
    if (!head.Holds(at, kPacketSize)) break;
    ++run;
  }
  return run;
}

// Assembles the sections of one table from the packets of its PID.
class Section {
 public:
  // Returns the section when it is complete.
  std::optional<ByteReader> Add(const Packets::Packet& packet) {
    ByteReader payload = packet.payload;
    if (packet.unitStart) {
      bytes_.clear();
      started_ = true;
      payload = payload.Clip(1 + std::uint64_t{payload.U8(0).value_or(0)});
    }
    if (!started_ || bytes_.size() + payload.Size() > kMaxSectionBytes) return std::nullopt;
    bytes_.insert(bytes_.end(), payload.Bytes().begin(), payload.Bytes().end());
    const ByteReader all(bytes_);
    const auto length = all.U16BE(1);
    if (!length) return std::nullopt;
    return all.Sub(0, 3 + std::uint64_t{*length & 0x0FFFu});
  }

 private:
  std::vector<std::byte> bytes_;
  bool started_ = false;
};

constexpr std::uint64_t kChecksum = 4;  // at the end of every section

std::vector<std::uint16_t> ProgramPIDs(ByteReader section) {
  std::vector<std::uint16_t> pids;
  if (section.U8(0) != 0x00) return pids;
  for (std::uint64_t at = 8; section.Holds(at, 4 + kChecksum) && pids.size() < kMaxPrograms;
       at += 4) {
    const auto program = section.U16BE(at).value_or(0);
    if (program != 0) pids.push_back(section.U16BE(at + 2).value_or(0) & 0x1FFF);
  }
  return pids;
}

// Descriptors of tag 1, length 1, data: calls `visit` with tag and data of each.
template <class Visit>
void ForEachDescriptor(ByteReader list, Visit visit) {
  for (std::uint64_t at = 0;;) {
    const auto tag = list.U8(at);
    const auto length = list.U8(at + 1);
    if (!tag || !length) return;
    visit(*tag, list.Clip(at + 2, *length));
    at += 2 + std::uint64_t{*length};
  }
}

constexpr std::uint8_t kRegistration = 0x05;

constexpr std::uint8_t kAC3Audio = 0x81;

void StoreDescriptor(std::uint8_t tag, ByteReader data, Stream& stream) {
  if (tag == kAC3Audio && data.Size() >= 3) {
    stream.ac3 = {data.U8(0).value_or(0), data.U8(1).value_or(0), data.U8(2).value_or(0)};
  }
  if (tag != kRegistration || data.U32BE(0) != kHDMV || data.U8(4) != 0xFF) return;
  stream.coding = data.U8(5).value_or(0);
  stream.formatAndRate = data.U8(6).value_or(0);
}

Program ReadProgram(ByteReader section) {
  Program program;
  if (section.U8(0) != 0x02) return program;
  const std::uint64_t infoLength = section.U16BE(10).value_or(0) & 0x0FFF;
  ForEachDescriptor(section.Clip(12, infoLength), [&program](std::uint8_t tag, ByteReader data) {
    if (tag == kRegistration && program.registration == 0) {
      program.registration = data.U32BE(0).value_or(0);
    }
  });
  std::uint64_t at = 12 + infoLength;
  while (section.Holds(at, 5 + kChecksum) && program.streams.size() < kMaxStreams) {
    Stream stream;
    stream.type = section.U8(at).value_or(0);
    stream.pid = section.U16BE(at + 1).value_or(0) & 0x1FFF;
    const std::uint64_t length = section.U16BE(at + 3).value_or(0) & 0x0FFF;
    ForEachDescriptor(section.Clip(at + 5, length), [&stream](std::uint8_t tag, ByteReader data) {
      StoreDescriptor(tag, data, stream);
    });
    program.streams.push_back(stream);
    at += 5 + length;
  }
  return program;
}

struct PESHeader {
  std::uint64_t size = 0;
  std::optional<std::uint64_t> presentation;
  std::optional<std::uint64_t> decoding;
};

// Five bytes: 4 bits, then 33 bits of the time stamp with a marker bit after each part.
std::optional<std::uint64_t> TimeStampAt(ByteReader payload, std::uint64_t offset) {
  const auto stamp = payload.ViewAt<5>(offset);
  if (!stamp) return std::nullopt;
  const auto at = [&stamp](std::size_t i) { return std::to_integer<std::uint64_t>((*stamp)[i]); };
  return (at(0) >> 1 & 7) << 30 | at(1) << 22 | at(2) >> 1 << 15 | at(3) << 7 | at(4) >> 1;
}

// 00 00 01, stream id, length 2, then for most streams two bytes of flags, the size of the rest of
// the header, and the time stamp.
PESHeader ReadPESHeader(ByteReader payload) {
  constexpr std::uint8_t kPrivateStream2 = 0xBF;
  PESHeader header;
  if (payload.U24BE(0) != 0x000001u) return header;
  if (payload.U8(3) == kPrivateStream2) {
    header.size = 6;
    return header;
  }
  const auto flags = payload.U8(7);
  const auto length = payload.U8(8);
  if (!flags || !length || (payload.U8(6).value_or(0) & 0xC0) != 0x80) return header;
  header.size = 9 + std::uint64_t{*length};
  constexpr std::uint64_t kStamps = 9;
  constexpr std::uint64_t kStampBytes = 5;
  if ((*flags & 0x80) != 0 && *length >= kStampBytes) {
    header.presentation = TimeStampAt(payload, kStamps);
  }
  if ((*flags & 0xC0) == 0xC0 && *length >= 2 * kStampBytes) {
    header.decoding = TimeStampAt(payload, kStamps + kStampBytes);
  }
  return header;
}

}  // namespace

std::optional<Layout> FindLayout(ByteReader head) {
  // A prefix or a payload may contain the sync byte too, so several consecutive packets are
  // required. Two are enough if the file has no more.
  constexpr std::uint64_t kMinPackets = 4;
  struct Candidate {
    std::uint64_t start;
    std::uint64_t stride;
  };
  std::uint64_t best = 0;
  Layout layout;
  for (const Candidate& trial : {Candidate{4, 192}, Candidate{0, 188}}) {
    const std::uint64_t run = CountPackets(head, trial.start, trial.stride);
    const bool all = run > 1 && trial.start + (run + 1) * trial.stride > head.Size();
    if ((run >= kMinPackets || all) && run > best) {
      best = run;
      layout = Layout{trial.start, trial.stride};
    }
  }
  if (best > 0) return layout;
  for (std::uint64_t start = 1; start < 192; ++start) {
    for (const std::uint64_t stride : {192u, 188u}) {
      const std::uint64_t run = CountPackets(head, start, stride);
      if (run > kMinPackets && run > best) {
        best = run;
        layout = Layout{start, stride};
      }
    }
  }
  if (best == 0) return std::nullopt;
  return layout;
}

Packets::Packets(ByteReader piece, const Layout& layout, std::uint64_t offset)
    : piece_(piece), stride_(layout.stride) {
  if (offset <= layout.start) {
    at_ = layout.start - offset;
  } else {
    const std::uint64_t into = (offset - layout.start) % stride_;
    at_ = into == 0 ? 0 : stride_ - into;
  }
}

std::optional<Packets::Packet> Packets::Next() {
  while (const auto view = piece_.ViewAt<kPacketSize>(at_)) {
    at_ += stride_;
    const ByteReader bytes(*view);
    const std::uint16_t word = bytes.U16BE(1).value_or(0);
    const std::uint8_t control = bytes.U8(3).value_or(0);
    const bool damaged = (word & 0x8000) != 0;
    const bool hasPayload = (control & 0x10) != 0;
    if (bytes.U8(0) != kSync || damaged || !hasPayload || (word & 0x1FFF) == kNullPID) continue;
    const bool adapted = (control & 0x20) != 0;
    const std::uint64_t start = adapted ? 5 + std::uint64_t{bytes.U8(4).value_or(0)} : 4;
    return Packet{static_cast<std::uint16_t>(word & 0x1FFF), (word & 0x4000) != 0,
                  bytes.Clip(start)};
  }
  return std::nullopt;
}

Program FindProgram(ByteReader piece, const Layout& layout) {
  Section association;
  std::vector<std::uint16_t> pids;
  std::map<std::uint16_t, Section> maps;
  Program found;
  Packets packets(piece, layout, 0);
  while (const auto packet = packets.Next()) {
    if (packet->pid == 0 && pids.empty()) {
      if (const auto section = association.Add(*packet)) pids = ProgramPIDs(*section);
    } else if (std::ranges::find(pids, packet->pid) != pids.end()) {
      const auto section = maps[packet->pid].Add(*packet);
      if (!section) continue;
      found = ReadProgram(*section);
      if (!found.streams.empty()) return found;
    }
  }
  return found;
}

Elementary Collect(ByteReader piece, const Layout& layout, std::uint64_t offset, std::uint16_t pid,
                   std::size_t maxBytes, bool timesOnly) {
  Elementary stream;
  bool started = false;
  if (!timesOnly) stream.bytes.reserve(std::min<std::size_t>(maxBytes, piece.Bytes().size()));
  Packets packets(piece, layout, offset);
  while (const auto packet = packets.Next()) {
    if (packet->pid != pid) continue;
    ByteReader payload = packet->payload;
    if (packet->unitStart) {
      const PESHeader header = ReadPESHeader(payload);
      started = header.size != 0;
      payload = payload.Clip(header.size);
      if (header.presentation) {
        stream.presentation.push_back(*header.presentation);
        stream.decoding.push_back(header.decoding.value_or(*header.presentation));
      }
      if (started && !timesOnly) stream.starts.push_back(stream.bytes.size());
    }
    if (!started || timesOnly) continue;
    const std::size_t room = maxBytes - stream.bytes.size();
    const auto bytes = payload.Clip(0, room).Bytes();
    stream.bytes.insert(stream.bytes.end(), bytes.begin(), bytes.end());
    if (stream.bytes.size() == maxBytes) break;
  }
  return stream;
}

std::vector<std::uint64_t> VideoTimes(ByteReader piece, const Layout& layout,
                                      std::uint64_t offset) {
  constexpr std::uint8_t kVideoStreams = 0xE0;  // 16 of them
  std::vector<std::uint64_t> times;
  Packets packets(piece, layout, offset);
  while (const auto packet = packets.Next()) {
    if (!packet->unitStart || (packet->payload.U8(3).value_or(0) & 0xF0) != kVideoStreams) continue;
    if (const auto time = ReadPESHeader(packet->payload).presentation) times.push_back(*time);
  }
  return times;
}

}  // namespace Sorvik::formats::ts
