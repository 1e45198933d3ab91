// SPDX-License-Identifier: MIT
#include "formats/avchd/StreamTimes.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "formats/TransportStream.h"
#include "foundation/ByteReader.h"
#include "foundation/CardFolder.h"

namespace Sorvik::formats::avchd {
namespace {

constexpr std::uint64_t kPieceBytes = std::uint64_t{1} << 20;
constexpr std::int32_t kTicksPerSecond = 45000;

// Streams count in 90 kHz with 33 bits, playlists in 45 kHz with 32.
std::uint32_t ToPlaylistTicks(std::uint64_t time) { return static_cast<std::uint32_t>(time / 2); }

// Positive if `later` is later than `time`. Both start again at 0 after 26 hours.
std::int32_t Difference(std::uint32_t later, std::uint32_t time) {
  return static_cast<std::int32_t>(later - time);
}

// The last video frame that is presented; nullopt if the piece has none.
std::optional<std::uint32_t> LastTime(const std::vector<std::uint64_t>& times) {
  if (times.empty()) return std::nullopt;
  std::uint32_t last = ToPlaylistTicks(times.front());
  for (const std::uint64_t time : times) {
    if (Difference(ToPlaylistTicks(time), last) > 0) last = ToPlaylistTicks(time);
  }
  return last;
}

}  // namespace

unsigned MissingSeconds(const std::string& path, const PlayItem& item) {
  if (item.inTime == item.outTime) return 0;
  const auto file = foundation::OpenOnCard(path);
  if (!file) return 0;
  const auto head = file->ReadHead(kPieceBytes);
  const auto layout = ts::FindLayout(foundation::ByteReader(head));
  if (!layout) return 0;
  const auto first = ts::VideoTimes(foundation::ByteReader(head), *layout, 0);
  // The play item begins inside the stream if both count from the same time.
  if (first.empty() || Difference(ToPlaylistTicks(first.front()), item.inTime) > kTicksPerSecond) {
    return 0;
  }
  const std::uint64_t tailAt = file->Size() - std::min(kPieceBytes, file->Size());
  std::vector<std::byte> tail(static_cast<std::size_t>(file->Size() - tailAt));
  tail.resize(file->ReadAt(tailAt, tail));
  const auto last = LastTime(ts::VideoTimes(foundation::ByteReader(tail), *layout, tailAt));
  if (!last) return 0;
  return static_cast<unsigned>(std::max(Difference(item.outTime, *last), 0) / kTicksPerSecond);
}

}  // namespace Sorvik::formats::avchd
