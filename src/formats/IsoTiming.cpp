// SPDX-License-Identifier: MIT
#include <algorithm>
#include <limits>
#include <string_view>
#include <vector>

#include "formats/IsoBox.h"
#include "formats/MediaTiming.h"
#include "foundation/ByteReader.h"

// Facts: ISO/IEC 14496-12, 8.6.1.2 (stts), 8.6.1.3 (ctts), 8.6.6 (elst), 8.4.2 (mdhd).
namespace Sorvik::formats {
namespace {

using foundation::ByteReader;

constexpr int kMaxBoxes = 4096;
constexpr std::size_t kMaxMovieBytes = std::size_t{32} << 20;

// The bytes of "moov" after its head; empty if there is none that can be read.
std::vector<std::byte> ReadMovie(const platform::RegularFile& file) {
  std::uint64_t at = 0;
  for (int i = 0; i < kMaxBoxes && at < file.Size(); ++i) {
    std::vector<std::byte> head(16);
    head.resize(file.ReadAt(at, head));
    const auto box = IsoBoxAt(ByteReader(head), at, file.Size());
    if (!box || box->end <= at) return {};
    if (box->type == "moov") {
      if (box->end > file.Size() || box->end - box->bodyAt > kMaxMovieBytes) return {};
      std::vector<std::byte> movie(static_cast<std::size_t>(box->end - box->bodyAt));
      movie.resize(file.ReadAt(box->bodyAt, movie));
      return movie;
    }
    at = box->end;
  }
  return {};
}

// Calls `visit` with the type and body of each box in `parent`.
template <class Visit>
void ForEachBox(ByteReader parent, Visit visit) {
  std::uint64_t at = 0;
  for (int i = 0; i < kMaxBoxes && at + 8 <= parent.Size(); ++i) {
    const auto box = IsoBoxAt(parent.Clip(at, 16), at, parent.Size());
    if (!box || box->end <= at || box->end > parent.Size()) return;
    visit(box->type, parent.Clip(box->bodyAt, box->end - box->bodyAt));
    at = box->end;
  }
}

ByteReader ChildOf(ByteReader parent, std::string_view type) {
  ByteReader found;
  ForEachBox(parent, [&](std::string_view name, ByteReader body) {
    if (name == type && found.Empty()) found = body;
  });
  return found;
}

// The time scale in "mvhd" or "mdhd"; 0 if it is invalid.
std::uint32_t TimescaleOf(ByteReader header) {
  return header.U32BE(header.U8(0) == 1 ? 20 : 12).value_or(0);
}

// The part of a track that is presented.
struct Edit {
  double emptySeconds = 0;     // before it
  std::int64_t mediaTime = 0;  // its start, in units of the track
  double seconds = 0;          // 0: to the end
};

// Returns nullopt for a list with more than one part.
std::optional<Edit> ReadEdit(ByteReader list, std::uint32_t movieScale) {
  Edit edit;
  bool hasMedia = false;
  const bool wide = list.U8(0) == 1;
  const std::uint64_t entryBytes = wide ? 20 : 12;
  const std::uint64_t count = list.U32BE(4).value_or(0);
  for (std::uint64_t i = 0; i < count && list.Holds(8 + i * entryBytes, entryBytes); ++i) {
    const std::uint64_t at = 8 + i * entryBytes;
    const double duration =
        wide ? static_cast<double>(list.U64BE(at).value_or(0)) : list.U32BE(at).value_or(0);
    const std::int64_t time = wide ? static_cast<std::int64_t>(list.U64BE(at + 8).value_or(0))
                                   : static_cast<std::int32_t>(list.U32BE(at + 4).value_or(0));
    if (hasMedia || movieScale == 0) return std::nullopt;
    if (time < 0) {
      edit.emptySeconds += duration / movieScale;
      continue;
    }
    hasMedia = true;
    edit.mediaTime = time;
    edit.seconds = duration / movieScale;
  }
  return edit;
}

// Samples in a row with the same duration and the same composition offset.
struct SampleRun {
  std::uint64_t count;
  std::int64_t duration;
  std::int64_t offset;
};

// Calls `visit` with the runs of a track until it returns false.
template <class Visit>
void ForEachRun(ByteReader stts, ByteReader ctts, Visit visit) {
  std::uint64_t offsetIndex = 0;
  std::uint64_t offsetLeft = ctts.Empty() ? UINT64_MAX : ctts.U32BE(8).value_or(UINT64_MAX);
  for (std::uint64_t i = 0; stts.Holds(8 + i * 8, 8) && i < stts.U32BE(4).value_or(0); ++i) {
    std::uint64_t left = stts.U32BE(8 + i * 8).value_or(0);
    const std::int64_t duration = stts.U32BE(12 + i * 8).value_or(0);
    while (left > 0) {
      while (offsetLeft == 0) {
        ++offsetIndex;
        offsetLeft = ctts.U32BE(8 + offsetIndex * 8).value_or(UINT64_MAX);
      }
      const std::uint64_t count = std::min(left, offsetLeft);
      const auto offset = static_cast<std::int32_t>(ctts.U32BE(12 + offsetIndex * 8).value_or(0));
      if (!visit(SampleRun{count, duration, offset})) return;
      left -= count;
      offsetLeft -= count;
    }
  }
}

struct TrackTiming {
  std::uint64_t pictures = 0;
  double firstStamp = 0;    // of the first sample in the file that is presented
  double firstPicture = 0;  // the earliest of all
};

// Which of the pictures of a track are presented, and when.
class PresentedPictures {
 public:
  PresentedPictures(const Edit& edit, std::uint32_t scale)
      : edit_(edit),
        scale_(scale),
        end_(edit.seconds > 0 ? static_cast<double>(edit.mediaTime) + edit.seconds * scale
                              : std::numeric_limits<double>::infinity()) {}

  // Returns false for sums that no file has.
  bool Add(const SampleRun& run) {
    constexpr std::uint64_t kMaxUnits = std::uint64_t{1} << 53;
    if (run.count * static_cast<std::uint64_t>(run.duration) > kMaxUnits - decoded_) return false;
    const double first = static_cast<double>(decoded_) + static_cast<double>(run.offset);
    // Rounding of the edit must not lose a picture.
    const double half = static_cast<double>(run.duration) / 2;
    const double from = static_cast<double>(edit_.mediaTime) - half;
    const std::uint64_t before = SamplesBelow(run, first, from);
    const std::uint64_t until = SamplesBelow(run, first, end_ - half);
    if (until > before) {
      const double presented =
          first + static_cast<double>(before) * static_cast<double>(run.duration);
      if (timing_.pictures == 0) timing_.firstStamp = timing_.firstPicture = presented;
      timing_.firstPicture = std::min(timing_.firstPicture, presented);
      timing_.pictures += until - before;
    }
    decoded_ += run.count * static_cast<std::uint64_t>(run.duration);
    return true;
  }

  TrackTiming Result() const {
    TrackTiming result = timing_;
    const auto seconds = [this](double units) {
      return (units - static_cast<double>(edit_.mediaTime)) / scale_ + edit_.emptySeconds;
    };
    result.firstStamp = seconds(timing_.firstStamp);
    result.firstPicture = seconds(timing_.firstPicture);
    return result;
  }

 private:
  // How many samples of the run are presented before `time`.
  static std::uint64_t SamplesBelow(const SampleRun& run, double first, double time) {
    if (first >= time) return 0;
    if (run.duration == 0) return run.count;
    const double samples = (time - first) / static_cast<double>(run.duration);
    if (samples >= static_cast<double>(run.count)) return run.count;
    const auto complete = static_cast<std::uint64_t>(samples);
    return static_cast<double>(complete) < samples ? complete + 1 : complete;
  }

  const Edit edit_;
  const double scale_;
  const double end_;
  std::uint64_t decoded_ = 0;
  TrackTiming timing_;
};

std::optional<TrackTiming> ReadPictures(ByteReader media, const Edit& edit) {
  const std::uint32_t scale = TimescaleOf(ChildOf(media, "mdhd"));
  const ByteReader tables = ChildOf(ChildOf(media, "minf"), "stbl");
  if (scale == 0) return std::nullopt;
  PresentedPictures pictures(edit, scale);
  bool valid = true;
  ForEachRun(ChildOf(tables, "stts"), ChildOf(tables, "ctts"), [&](const SampleRun& run) {
    valid = pictures.Add(run);
    return valid;
  });
  const TrackTiming timing = pictures.Result();
  if (!valid || timing.pictures == 0) return std::nullopt;
  return timing;
}

// Combines the tracks of a movie.
class MovieTiming {
 public:
  explicit MovieTiming(ByteReader movie) : movie_(movie) {}

  std::optional<MediaTiming> Read() {
    if (!ChildOf(movie_, "mvex").Empty()) return std::nullopt;  // fragmented
    const std::uint32_t movieScale = TimescaleOf(ChildOf(movie_, "mvhd"));
    ForEachBox(movie_, [&](std::string_view type, ByteReader track) {
      if (type == "trak") AddTrack(track, movieScale);
    });
    if (!valid_ || !pictures_) return std::nullopt;
    return MediaTiming{first_, pictures_->firstPicture, pictures_->pictures, false};
  }

 private:
  void AddTrack(ByteReader track, std::uint32_t movieScale) {
    const ByteReader media = ChildOf(track, "mdia");
    const std::string_view handler = ChildOf(media, "hdlr").TextAt(8, 4);
    const bool isVideo = handler == "vide";
    if ((!isVideo && handler != "soun") || (isVideo && pictures_)) return;
    const auto edit = ReadEdit(ChildOf(ChildOf(track, "edts"), "elst"), movieScale);
    if (!edit) valid_ = false;
    if (!valid_) return;
    double first = edit->emptySeconds;
    if (isVideo) {
      pictures_ = ReadPictures(media, *edit);
      valid_ = pictures_.has_value();
      if (!valid_) return;
      first = pictures_->firstStamp;
    }
    first_ = hasFirst_ ? std::min(first_, first) : first;
    hasFirst_ = true;
  }

  ByteReader movie_;
  bool valid_ = true;
  bool hasFirst_ = false;
  double first_ = 0;
  std::optional<TrackTiming> pictures_;
};

}  // namespace

std::optional<MediaTiming> ReadIsoTiming(const platform::RegularFile& file) {
  const std::vector<std::byte> movie = ReadMovie(file);
  return MovieTiming(ByteReader(movie)).Read();
}

}  // namespace Sorvik::formats
