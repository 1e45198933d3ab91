// SPDX-License-Identifier: MIT
#include <algorithm>
#include <bit>
#include <limits>
#include <numeric>
#include <string_view>
#include <vector>

#include "formats/IsoBox.h"
#include "formats/MediaTiming.h"
#include "foundation/ByteReader.h"

// Facts: ISO/IEC 14496-12, 8.6.1.2 (stts), 8.6.1.3 (ctts), 8.6.6 (elst), 8.4.2 (mdhd), 8.8.3
// (trex), 8.8.7 (tfhd), 8.8.8 (trun), 8.8.12 (tfdt).
namespace Sorvik::formats {
namespace {

using foundation::ByteReader;

constexpr int kMaxBoxes = 4096;
// A box for the head and one for the data of each fragment of at least a second.
constexpr int kMaxFragmentBoxes = 1 << 17;
constexpr std::size_t kMaxMovieBytes = std::size_t{32} << 20;

// The boxes of a file, one after the other.
class TopBoxes {
 public:
  explicit TopBoxes(const platform::RegularFile& file) : file_(file) {}

  // Returns the bytes after the head of the next box of that type; empty if there is none that can
  // be read, or if it isn't among the first `maxBoxes` of the file.
  std::vector<std::byte> Next(std::string_view type, int maxBoxes) {
    for (; boxes_ < maxBoxes && at_ < file_.Size(); ++boxes_) {
      std::vector<std::byte> head(16);
      head.resize(file_.ReadAt(at_, head));
      const auto box = IsoBoxAt(ByteReader(head), at_, file_.Size());
      if (!box || box->end <= at_ || box->end > file_.Size()) return {};
      at_ = box->end;
      if (box->type != type) continue;
      if (box->end - box->bodyAt > kMaxMovieBytes) return {};
      std::vector<std::byte> body(static_cast<std::size_t>(box->end - box->bodyAt));
      body.resize(file_.ReadAt(box->bodyAt, body));
      return body;
    }
    return {};
  }

  bool AtEnd() const { return at_ >= file_.Size(); }

 private:
  const platform::RegularFile& file_;
  std::uint64_t at_ = 0;
  int boxes_ = 0;
};

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

// A part of a track that is presented.
struct Edit {
  std::int64_t mediaTime = 0;  // its start, in units of the track
  double seconds = 0;          // 0: to the end
};

struct EditList {
  double emptySeconds = 0;  // before the first edit
  std::vector<Edit> edits = {{}};
};

// Returns nullopt if an edit is empty after the first one, or isn't played at its own speed.
std::optional<EditList> ReadEdits(ByteReader list, std::uint32_t movieScale) {
  constexpr std::size_t kMaxEdits = 64;
  constexpr std::uint32_t kNormalRate = 0x10000;
  EditList result;
  std::vector<Edit> edits;
  const bool wide = list.U8(0) == 1;
  const std::uint64_t entryBytes = wide ? 20 : 12;
  const std::uint64_t count = list.U32BE(4).value_or(0);
  for (std::uint64_t i = 0; i < count && list.Holds(8 + i * entryBytes, entryBytes); ++i) {
    const std::uint64_t at = 8 + i * entryBytes;
    const double duration =
        wide ? static_cast<double>(list.U64BE(at).value_or(0)) : list.U32BE(at).value_or(0);
    const std::int64_t time = wide ? static_cast<std::int64_t>(list.U64BE(at + 8).value_or(0))
                                   : static_cast<std::int32_t>(list.U32BE(at + 4).value_or(0));
    const bool isOpenEnded = !edits.empty() && edits.back().seconds == 0;
    if (movieScale == 0 || isOpenEnded || edits.size() == kMaxEdits) return std::nullopt;
    if (time < 0) {
      if (!edits.empty()) return std::nullopt;
      result.emptySeconds += duration / movieScale;
      continue;
    }
    if (!edits.empty() && list.U32BE(at + entryBytes - 4) != kNormalRate) return std::nullopt;
    edits.push_back({time, duration / movieScale});
  }
  if (!edits.empty()) result.edits = std::move(edits);
  return result;
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
  // In units of the track.
  double firstStamp = 0;             // of the first sample in the file that is presented
  double firstPicture = 0;           // the earliest of all
  std::int64_t duration = 0;         // of the first sample
  std::uint64_t otherDurations = 0;  // number of samples of another one

  // The duration of all samples, or of all but one, which ends the file; 0 if they vary.
  std::uint64_t UniformDuration() const {
    return otherDurations <= 1 && duration > 0 ? static_cast<std::uint64_t>(duration) : 0;
  }
};

// Which samples of a track are presented between two times in units of the track.
class PresentedSamples {
 public:
  PresentedSamples() = default;
  PresentedSamples(const Edit& edit, std::uint32_t scale)
      : begin_(static_cast<double>(edit.mediaTime)),
        end_(edit.seconds > 0 ? begin_ + edit.seconds * scale
                              : std::numeric_limits<double>::infinity()) {}

  // The decoding time of the next sample.
  void StartAt(std::uint64_t units) { decoded_ = units; }

  // Returns false for sums that no file has.
  bool Add(const SampleRun& run) {
    constexpr std::uint64_t kMaxUnits = std::uint64_t{1} << 53;
    if (decoded_ > kMaxUnits ||
        run.count * static_cast<std::uint64_t>(run.duration) > kMaxUnits - decoded_) {
      return false;
    }
    const double first = static_cast<double>(decoded_) + static_cast<double>(run.offset);
    // Rounding of the edit must not lose a picture.
    const double half = static_cast<double>(run.duration) / 2;
    const std::uint64_t before = SamplesBelow(run, first, begin_ - half);
    const std::uint64_t until = SamplesBelow(run, first, end_ - half);
    if (until > before) {
      const double presented =
          first + static_cast<double>(before) * static_cast<double>(run.duration);
      if (timing_.pictures == 0) {
        timing_.firstStamp = timing_.firstPicture = presented;
        timing_.duration = run.duration;
      }
      if (run.duration != timing_.duration) timing_.otherDurations += until - before;
      timing_.firstPicture = std::min(timing_.firstPicture, presented);
      timing_.pictures += until - before;
    }
    decoded_ += run.count * static_cast<std::uint64_t>(run.duration);
    return true;
  }

  const TrackTiming& Timing() const { return timing_; }

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

  double begin_ = -std::numeric_limits<double>::infinity();
  double end_ = std::numeric_limits<double>::infinity();
  std::uint64_t decoded_ = 0;
  TrackTiming timing_;
};

// Adds the samples of the tables in "moov". Returns false if they are invalid.
bool AddTables(ByteReader media, PresentedSamples& samples) {
  const ByteReader tables = ChildOf(ChildOf(media, "minf"), "stbl");
  bool valid = true;
  ForEachRun(ChildOf(tables, "stts"), ChildOf(tables, "ctts"), [&](const SampleRun& run) {
    valid = samples.Add(run);
    return valid;
  });
  return valid;
}

// A track of a fragmented movie. Its edit moves the time stamps, but hides no sample.
struct FragmentedTrack {
  std::uint32_t id;
  std::uint32_t scale;
  double shift;                   // seconds from the time of the track to that of the movie
  std::uint32_t defaultDuration;  // of a sample
  PresentedSamples samples = {};

  double Seconds(double units) const { return units / scale + shift; }
};

// Adds the samples of a "trun". Returns false if it is invalid.
bool AddTrackRun(ByteReader run, std::uint32_t defaultDuration, PresentedSamples& samples) {
  constexpr std::uint32_t kDuration = 0x100;
  constexpr std::uint32_t kOffset = 0x800;
  constexpr std::uint32_t kPerSample = 0xF00;
  const std::uint32_t flags = run.U32BE(0).value_or(0);
  const std::uint64_t count = run.U32BE(4).value_or(0);
  std::uint64_t at = 8 + ((flags & 0x1) != 0 ? 4U : 0U) + ((flags & 0x4) != 0 ? 4U : 0U);
  const auto stride = static_cast<std::uint64_t>(4 * std::popcount(flags & kPerSample));
  if (!run.Holds(at, count * stride)) return false;
  if ((flags & (kDuration | kOffset)) == 0) return samples.Add({count, defaultDuration, 0});
  for (std::uint64_t i = 0; i < count; ++i, at += stride) {
    const bool hasDuration = (flags & kDuration) != 0;
    const bool hasOffset = (flags & kOffset) != 0;
    const std::int64_t duration = hasDuration ? run.U32BE(at).value_or(0) : defaultDuration;
    const auto offset =
        hasOffset ? static_cast<std::int32_t>(run.U32BE(at + stride - 4).value_or(0)) : 0;
    if (!samples.Add({1, duration, offset})) return false;
  }
  return true;
}

// Combines the tracks of a movie.
class MovieTiming {
 public:
  MovieTiming(ByteReader movie, TopBoxes& boxes)
      : movie_(movie), boxes_(boxes), extends_(ChildOf(movie, "mvex")) {}

  std::optional<MediaTiming> Read() {
    const std::uint32_t movieScale = TimescaleOf(ChildOf(movie_, "mvhd"));
    ForEachBox(movie_, [&](std::string_view type, ByteReader track) {
      if (type == "trak") AddTrack(track, movieScale);
    });
    if (!isPlaced_) return Unplaced();
    if (!extends_.Empty()) return ReadFragments();
    if (!valid_ || !hasVideo_) return std::nullopt;
    return timing_;
  }

 private:
  static MediaTiming Unplaced() {
    MediaTiming timing;
    timing.isPlaced = false;
    return timing;
  }

  void AddTrack(ByteReader track, std::uint32_t movieScale) {
    const ByteReader media = ChildOf(track, "mdia");
    const std::string_view handler = ChildOf(media, "hdlr").TextAt(8, 4);
    const bool isVideo = handler == "vide";
    if ((!isVideo && handler != "soun") || (isVideo && hasVideo_)) return;
    const auto edits = ReadEdits(ChildOf(ChildOf(track, "edts"), "elst"), movieScale);
    if (!edits) isPlaced_ = false;
    if (!edits || !valid_) return;
    hasVideo_ = hasVideo_ || isVideo;
    const std::uint32_t scale = TimescaleOf(ChildOf(media, "mdhd"));
    if (!extends_.Empty()) {
      AddFragmentedTrack(track, *edits, scale, isVideo);
    } else if (isVideo) {
      AddPictures(media, *edits, scale);
    } else {
      AddFirst(edits->emptySeconds);
    }
  }

  void AddPictures(ByteReader media, const EditList& list, std::uint32_t scale) {
    std::optional<TrackTiming> first;
    for (const Edit& edit : list.edits) {
      PresentedSamples pictures(edit, scale);
      valid_ = valid_ && scale != 0 && AddTables(media, pictures);
      timing_.pictures += pictures.Timing().pictures;
      if (!first) first = pictures.Timing();
    }
    valid_ = valid_ && first && first->pictures > 0;
    if (!valid_) return;
    const auto seconds = [&](double units) {
      return (units - static_cast<double>(list.edits.front().mediaTime)) / scale +
             list.emptySeconds;
    };
    timing_.firstPicture = seconds(first->firstPicture);
    SetRate(scale, *first);
    AddFirst(seconds(first->firstStamp));
  }

  void SetRate(std::uint32_t scale, const TrackTiming& timing) {
    const std::uint64_t duration = timing.UniformDuration();
    if (duration == 0) return;
    const std::uint64_t divisor = std::gcd(std::uint64_t{scale}, duration);
    timing_.rateNumerator = scale / divisor;
    timing_.rateDenominator = duration / divisor;
  }

  void AddFirst(double seconds) {
    timing_.firstStamp = hasFirst_ ? std::min(timing_.firstStamp, seconds) : seconds;
    hasFirst_ = true;
  }

  void AddFragmentedTrack(ByteReader track, const EditList& list, std::uint32_t scale,
                          bool isVideo) {
    const ByteReader header = ChildOf(track, "tkhd");
    if (scale == 0 || list.edits.size() > 1) isPlaced_ = false;
    if (!isPlaced_) return;
    FragmentedTrack added{
        header.U32BE(header.U8(0) == 1 ? 20 : 12).value_or(0), scale,
        list.emptySeconds - static_cast<double>(list.edits.front().mediaTime) / scale, 0};
    ForEachBox(extends_, [&](std::string_view type, ByteReader defaults) {
      if (type == "trex" && defaults.U32BE(4) == added.id) {
        added.defaultDuration = defaults.U32BE(12).value_or(0);
      }
    });
    isPlaced_ = AddTables(ChildOf(track, "mdia"), added.samples);
    if (isVideo) videoId_ = added.id;
    tracks_.push_back(added);
  }

  std::optional<MediaTiming> ReadFragments() {
    for (;;) {
      const std::vector<std::byte> fragment = boxes_.Next("moof", kMaxFragmentBoxes);
      if (fragment.empty()) break;
      ForEachBox(ByteReader(fragment), [&](std::string_view type, ByteReader track) {
        if (type == "traf") AddTrackFragment(track);
      });
    }
    // Of a truncated file the number of pictures isn't known.
    if (!isPlaced_ || !boxes_.AtEnd()) return Unplaced();
    for (const FragmentedTrack& track : tracks_) {
      const TrackTiming& timing = track.samples.Timing();
      if (timing.pictures == 0) continue;
      AddFirst(track.Seconds(timing.firstStamp));
      if (track.id != videoId_) continue;
      timing_.firstPicture = track.Seconds(timing.firstPicture);
      timing_.pictures = timing.pictures;
      SetRate(track.scale, timing);
    }
    if (timing_.pictures == 0) return std::nullopt;
    return timing_;
  }

  void AddTrackFragment(ByteReader fragment) {
    const ByteReader header = ChildOf(fragment, "tfhd");
    const auto track =
        std::ranges::find(tracks_, header.U32BE(4).value_or(0), &FragmentedTrack::id);
    if (track == tracks_.end()) return;
    const std::uint32_t flags = header.U32BE(0).value_or(0);
    const std::uint64_t at = 8 + ((flags & 0x1) != 0 ? 8U : 0U) + ((flags & 0x2) != 0 ? 4U : 0U);
    const std::uint32_t duration =
        (flags & 0x8) != 0 ? header.U32BE(at).value_or(0) : track->defaultDuration;
    const ByteReader time = ChildOf(fragment, "tfdt");
    if (!time.Empty()) {
      track->samples.StartAt(time.U8(0) == 1 ? time.U64BE(4).value_or(0)
                                             : time.U32BE(4).value_or(0));
    }
    ForEachBox(fragment, [&](std::string_view type, ByteReader run) {
      if (type == "trun") isPlaced_ = isPlaced_ && AddTrackRun(run, duration, track->samples);
    });
  }

  const ByteReader movie_;
  TopBoxes& boxes_;
  const ByteReader extends_;  // not empty: the movie is fragmented
  bool valid_ = true;
  bool isPlaced_ = true;
  bool hasVideo_ = false;
  bool hasFirst_ = false;
  MediaTiming timing_;
  std::vector<FragmentedTrack> tracks_;
  std::uint32_t videoId_ = 0;
};

}  // namespace

std::optional<MediaTiming> ReadIsoTiming(const platform::RegularFile& file) {
  TopBoxes boxes(file);
  const std::vector<std::byte> movie = boxes.Next("moov", kMaxBoxes);
  return MovieTiming(ByteReader(movie), boxes).Read();
}

}  // namespace Sorvik::formats
