// SPDX-License-Identifier: MIT
#include "formats/MediaTiming.h"

#include <algorithm>
#include <set>
#include <vector>

#include "formats/TransportStream.h"
#include "foundation/ByteReader.h"
#include "foundation/Paths.h"

// Facts: ISO/IEC 13818-1, 2.4.3.7 (time stamps of 33 bits in units of 1/90000 s) and table 2-34
// (stream types).
namespace Sorvik::formats {
namespace {

using foundation::ByteReader;
using platform::RegularFile;

// Holds several pictures at the highest bit rates of cards, and the first sound.
constexpr std::size_t kPieceBytes = std::size_t{2} << 20;
constexpr double kTicksPerSecond = 90000;
constexpr std::int64_t kWrap = std::int64_t{1} << 33;

std::vector<std::byte> ReadPiece(const RegularFile& file, std::uint64_t offset) {
  std::vector<std::byte> bytes(
      static_cast<std::size_t>(std::min<std::uint64_t>(kPieceBytes, file.Size() - offset)));
  bytes.resize(file.ReadAt(offset, bytes));
  return bytes;
}

bool IsVideo(std::uint8_t type) {
  static constexpr std::uint8_t kTypes[] = {0x01, 0x02, 0x10, 0x1B, 0x24, 0xEA};
  return std::ranges::find(kTypes, type) != std::end(kTypes);
}

// The distance from `base` to a time stamp, which wraps.
std::int64_t Since(std::uint64_t base, std::uint64_t stamp) {
  const auto delta = static_cast<std::int64_t>((stamp - base) & (kWrap - 1));
  return delta >= kWrap / 2 ? delta - kWrap : delta;
}

// The pictures of a piece of the stream: presentation times in frames since the first picture of
// the file, and the decoding time of the last one.
class PictureNumbers {
 public:
  PictureNumbers(std::uint64_t base, double framesPerTick)
      : base_(base), framesPerTick_(framesPerTick) {}

  void Add(const ts::Elementary& stream) {
    for (const std::uint64_t stamp : stream.presentation) numbers_.insert(NumberOf(stamp));
    if (!stream.decoding.empty()) lastDecoded_ = NumberOf(stream.decoding.back());
  }
  bool Empty() const { return numbers_.empty(); }
  std::int64_t Last() const { return *numbers_.rbegin(); }
  std::size_t Count() const { return numbers_.size(); }

  // Pictures between the first one and the last decoding time that aren't in the piece, so that
  // they aren't in the file: the file before contains them.
  std::int64_t MissingAtHead() const {
    return std::max<std::int64_t>(lastDecoded_, 0) - CountBetween(0, lastDecoded_);
  }
  // Pictures after the last decoding time that aren't in the piece: the next file contains them.
  std::int64_t MissingAtTail() const {
    return Last() - lastDecoded_ - CountBetween(lastDecoded_ + 1, Last() + 1);
  }

 private:
  // Fields may have time stamps of their own: half a frame more is the same frame.
  std::int64_t NumberOf(std::uint64_t stamp) const {
    const double frames = static_cast<double>(Since(base_, stamp)) * framesPerTick_ + 0.25;
    return static_cast<std::int64_t>(frames < 0 ? frames - 1 : frames);
  }
  std::int64_t CountBetween(std::int64_t from, std::int64_t to) const {
    if (to <= from) return 0;
    return std::distance(numbers_.lower_bound(from), numbers_.lower_bound(to));
  }

  std::uint64_t base_;
  double framesPerTick_;
  std::set<std::int64_t> numbers_;
  std::int64_t lastDecoded_ = 0;
};

class StreamTiming {
 public:
  StreamTiming(const RegularFile& file, double framesPerSecond)
      : file_(file), framesPerTick_(framesPerSecond / kTicksPerSecond) {}

  std::optional<MediaTiming> Read() {
    const auto head = ReadPiece(file_, 0);
    const ByteReader bytes(head);
    const auto layout = ts::FindLayout(bytes);
    if (!layout) return std::nullopt;
    layout_ = *layout;
    const ts::Program program = ts::FindProgram(bytes, layout_);
    const auto video = std::ranges::find_if(
        program.streams, [](const ts::Stream& stream) { return IsVideo(stream.type); });
    if (video == program.streams.end()) return std::nullopt;
    const ts::Elementary pictures = TimesIn(bytes, 0, video->pid);
    if (pictures.presentation.empty()) return std::nullopt;
    const std::uint64_t base = *std::ranges::min_element(
        pictures.presentation, {},
        [&pictures](std::uint64_t stamp) { return Since(pictures.presentation.front(), stamp); });
    MediaTiming timing;
    timing.isTransportClock = true;
    timing.firstPicture = static_cast<double>(base) / kTicksPerSecond;
    const std::int64_t lead = FirstStamp(bytes, program, base);
    timing.firstStamp =
        static_cast<double>(static_cast<std::int64_t>(base) + lead) / kTicksPerSecond;
    timing.pictures = CountPictures(pictures, base, video->pid, head.size());
    return timing;
  }

 private:
  ts::Elementary TimesIn(ByteReader piece, std::uint64_t offset, std::uint16_t pid) const {
    return ts::Collect(piece, layout_, offset, pid, 0, true);
  }

  // The earliest first time stamp of a stream, in ticks after the first picture.
  std::int64_t FirstStamp(ByteReader head, const ts::Program& program, std::uint64_t base) const {
    std::optional<std::int64_t> first;
    for (const ts::Stream& stream : program.streams) {
      const auto times = TimesIn(head, 0, stream.pid);
      if (times.presentation.empty()) continue;
      const std::int64_t stamp = Since(base, times.presentation.front());
      first = std::min(first.value_or(stamp), stamp);
    }
    return first.value_or(0);
  }

  std::uint64_t CountPictures(const ts::Elementary& inHead, std::uint64_t base, std::uint16_t pid,
                              std::size_t headBytes) const {
    PictureNumbers head(base, framesPerTick_);
    head.Add(inHead);
    if (file_.Size() <= headBytes) return head.Count();
    const std::uint64_t tailAt = std::max<std::uint64_t>(
        headBytes, file_.Size() - std::min<std::uint64_t>(kPieceBytes, file_.Size()));
    const auto bytes = ReadPiece(file_, tailAt);
    PictureNumbers tail(base, framesPerTick_);
    // A short tail may hold fewer pictures than are reordered.
    if (tailAt == headBytes) tail.Add(inHead);
    tail.Add(TimesIn(ByteReader(bytes), tailAt, pid));
    if (tail.Empty() || tail.Last() < 0) return 0;
    const std::int64_t count = tail.Last() + 1 - head.MissingAtHead() - tail.MissingAtTail();
    return static_cast<std::uint64_t>(std::max<std::int64_t>(count, 0));
  }

  const RegularFile& file_;
  double framesPerTick_;
  ts::Layout layout_;
};

bool HasOneOf(const std::string& path, std::initializer_list<std::string_view> extensions) {
  return std::ranges::any_of(extensions, [&path](std::string_view extension) {
    return foundation::HasExtension(path, extension);
  });
}

}  // namespace

std::optional<MediaTiming> ReadTransportTiming(const RegularFile& file, double framesPerSecond) {
  if (!(framesPerSecond > 0)) return std::nullopt;
  return StreamTiming(file, framesPerSecond).Read();
}

std::optional<MediaTiming> ReadMediaTiming(const std::string& path, double framesPerSecond) {
  const bool isTransport = HasOneOf(path, {".mts", ".m2ts", ".m2t", ".ts"});
  if (!isTransport && !HasOneOf(path, {".mp4", ".mov"})) return std::nullopt;
  const auto file = RegularFile::Open(path);
  if (!file) return std::nullopt;
  return isTransport ? ReadTransportTiming(*file, framesPerSecond) : ReadIsoTiming(*file);
}

}  // namespace Sorvik::formats
