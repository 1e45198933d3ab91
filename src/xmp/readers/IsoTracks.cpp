// SPDX-License-Identifier: MIT
#include "xmp/readers/IsoTracks.h"

#include <algorithm>
#include <cstdlib>

#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/IsoSampleEntry.h"
#include "xmp/readers/IsoVideoEntry.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

constexpr std::size_t kMaxTracks = 64;
// A description with all parts that are used; the largest contain the parameter sets of the video.
constexpr std::uint64_t kMaxEntryBytes = 4096;
// The picture timing is in front of the first slice.
constexpr std::uint64_t kMaxFrameBytes = 4096;
// Durations of samples: more than a minute of different ones.
constexpr std::uint64_t kMaxTimesBytes = 64 * 1024;

// The two layouts of the same record: times and durations of four or of eight bytes.
struct Times {
  std::uint64_t created = 0;
  std::uint64_t modified = 0;
  std::uint32_t timescale = 0;
  std::uint64_t duration = 0;
};
// mvhd and mdhd: version and flags, creation, modification, timescale, duration.
Times ReadTimes(ByteReader box) {
  Times times;
  if (box.U8(0) == 1) {
    times.created = box.U64BE(4).value_or(0);
    times.modified = box.U64BE(12).value_or(0);
    times.timescale = box.U32BE(20).value_or(0);
    times.duration = box.U64BE(24).value_or(0);
    if (times.duration == UINT64_MAX) times.duration = 0;
  } else {
    times.created = box.U32BE(4).value_or(0);
    times.modified = box.U32BE(8).value_or(0);
    times.timescale = box.U32BE(12).value_or(0);
    times.duration = box.U32BE(16).value_or(0);
    if (times.duration == UINT32_MAX) times.duration = 0;
  }
  return times;
}

bool IsProRes(std::string_view entry) {
  return entry.size() > 8 && (entry.substr(4, 3) == "apc" || entry.substr(4, 3) == "ap4");
}

bool IsVC3(std::string_view entry) {
  return entry.size() > 8 && (entry.substr(4, 4) == "AVdn" || entry.substr(4, 4) == "AVdh");
}

// Whether facts about the video are only in its first frame.
bool NeedsFirstFrame(std::string_view entry) {
  return IsProRes(entry) || IsVC3(entry) || HasUnknownFieldOrder(foundation::ReaderOf(entry));
}

class TrackParser {
 public:
  explicit TrackParser(FileWindow& file) : file_(file) {}

  IsoTrack Parse(const IsoBox& trak) {
    IsoBoxes boxes(file_, trak);
    while (const auto box = boxes.Next()) {
      if (box->type == FourCC("tkhd")) ReadHeader(Body(*box, 96));
      if (box->type == FourCC("mdia")) ReadMedia(*box);
    }
    Finish();
    return track_;
  }

 private:
  ByteReader Body(const IsoBox& box, std::uint64_t maxBytes) {
    return file_.At(box.body, std::min(maxBytes, box.Size()));
  }

  // Width and height are at the end of the record, as 16.16 fixed-point numbers.
  void ReadHeader(ByteReader tkhd) {
    const bool wide = tkhd.U8(0) == 1;
    track_.id = tkhd.U32BE(wide ? 20 : 12).value_or(0);
    const std::uint64_t size = wide ? 88 : 76;
    track_.width = tkhd.U32BE(size).value_or(0) >> 16;
    track_.height = tkhd.U32BE(size + 4).value_or(0) >> 16;
  }

  void ReadMedia(const IsoBox& mdia) {
    IsoBoxes boxes(file_, mdia);
    while (const auto box = boxes.Next()) {
      if (box->type == FourCC("mdhd")) {
        const Times times = ReadTimes(Body(*box, 32));
        track_.timescale = times.timescale;
        track_.duration = times.duration;
      } else if (box->type == FourCC("hdlr")) {
        track_.handler = Body(*box, 12).U32BE(8).value_or(0);
      } else if (box->type == FourCC("minf")) {
        if (const auto stbl = FindBox(file_, *box, FourCC("stbl"))) ReadTables(*stbl);
      }
    }
  }

  // The tables of large files are far apart, so stop as early as possible.
  void ReadTables(const IsoBox& stbl) {
    IsoBoxes boxes(file_, stbl);
    while (!Complete()) {
      const auto box = boxes.Next();
      if (!box) return;
      switch (box->type) {
        case FourCC("stsd"):
          ReadDescriptions(*box);
          break;
        case FourCC("stts"):
          track_.times = ReadSampleTimes(Body(*box, kMaxTimesBytes), completeTimes_);
          timed_ = true;
          break;
        case FourCC("stsz"):
        case FourCC("stz2"):
          track_.samples = Body(*box, 12).U32BE(8).value_or(0);
          sized_ = true;
          break;
        case FourCC("stco"):
          track_.firstChunk = Body(*box, 12).U32BE(8).value_or(0);
          break;
        case FourCC("co64"):
          track_.firstChunk = Body(*box, 16).U64BE(8).value_or(0);
          break;
        default:
          break;
      }
    }
  }

  bool Complete() const {
    if (track_.entry.empty()) return false;
    if (track_.handler == FourCC("tmcd") || track_.IsTelemetry()) return track_.firstChunk != 0;
    if (needsFrame_ && track_.firstChunk == 0) return false;
    return track_.handler == FourCC("vide") ? timed_ && sized_ : timed_ || sized_;
  }

  // Of a long table only the first part was read.
  void Finish() {
    track_.empty = sized_ ? track_.samples == 0 : timed_ && track_.times.Samples() < 1;
    double mean = 0;
    if (completeTimes_) {
      if (!sized_) track_.samples = static_cast<std::uint64_t>(track_.times.Samples());
    } else if (track_.duration != 0) {
      mean = static_cast<double>(track_.samples) * track_.timescale /
             static_cast<double>(track_.duration);
    }
    track_.timing = FrameTimingOf(track_.times, track_.timescale, mean);
  }

  // Version and flags, number of entries, entries with their own sizes.
  void ReadDescriptions(const IsoBox& stsd) {
    const auto header = Body(stsd, 12);
    if (header.U32BE(4).value_or(0) == 0) return;
    const std::uint64_t size = header.U32BE(8).value_or(0);
    if (size < 16 || stsd.Size() < 8) return;
    track_.entry =
        file_.Copy(stsd.body + 8, std::min<std::uint64_t>({size, stsd.Size() - 8, kMaxEntryBytes}));
    needsFrame_ = track_.handler == FourCC("vide") && NeedsFirstFrame(track_.entry);
  }

  FileWindow& file_;
  IsoTrack track_;
  bool sized_ = false;
  bool timed_ = false;
  bool completeTimes_ = true;
  bool needsFrame_ = false;
};

// Fragmented files store durations outside the tables. trex: track, description, duration.
void ReadFragmentDefaults(FileWindow& file, const IsoBox& mvex, IsoMovie& movie) {
  movie.fragmented = true;
  IsoBoxes boxes(file, mvex);
  while (const auto box = boxes.Next()) {
    const ByteReader body = file.At(box->body, std::min<std::uint64_t>(16, box->Size()));
    if (box->type == FourCC("mehd")) {
      movie.fragmentDuration =
          body.U8(0) == 1 ? body.U64BE(4).value_or(0) : body.U32BE(4).value_or(0);
    } else if (box->type == FourCC("trex") && movie.fragmentDefaults.size() < kMaxTracks) {
      movie.fragmentDefaults.emplace_back(body.U32BE(4).value_or(0), body.U32BE(12).value_or(0));
    }
  }
}

const IsoTrack* FirstTrack(const IsoMovie& movie, std::uint32_t handler) {
  for (const IsoTrack& track : movie.tracks) {
    if (track.handler == handler && !track.entry.empty()) return &track;
  }
  return nullptr;
}

// In frames if the rate is constant, otherwise in units of the movie. A movie without samples, such
// as the first segment of a stream, has no duration.
void SetMovieDuration(const IsoMovie& movie, const IsoTrack* video, TXMPMeta& meta) {
  const bool frames = video != nullptr && video->timing.constant && video->samples > 1;
  const bool samples = std::any_of(movie.tracks.begin(), movie.tracks.end(),
                                   [](const IsoTrack& track) { return !track.empty; });
  if (frames) {
    SetDuration(meta, video->samples, video->timing.rate);
  } else if (movie.duration != 0 && (samples || movie.fragmented)) {
    SetDuration(meta, movie.duration, Rate{movie.timescale, 1});
  }
}

constexpr std::int64_t kSecondsPerDay = 86400;

// The difference of a timecode and the time of day of a date in seconds since 1904.
std::int64_t DistanceFromClock(const Timecode& timecode, std::uint64_t date) {
  const std::int64_t time = timecode.hours * 3600 + timecode.minutes * 60 + timecode.seconds;
  const std::int64_t day = static_cast<std::int64_t>(date % kSecondsPerDay);
  const std::int64_t distance = std::abs(time - day);
  return std::min(distance, kSecondsPerDay - distance);
}

// If the entry contradicts its clock, the clock counts, unless only the other base gives the time
// of the movie header: cameras that record the time of day write that time to both.
unsigned ChooseBase(const TimecodeEntry& entry, std::uint32_t counter, std::uint64_t created) {
  constexpr std::int64_t kMaxDistance = 60;
  if (entry.statedBase == entry.base || entry.statedBase == 0 || created == 0) return entry.base;
  const auto distance = [&](unsigned base) {
    return DistanceFromClock(TimecodeOfFrames(counter, base, entry.drop), created);
  };
  const bool stated =
      distance(entry.statedBase) <= kMaxDistance && distance(entry.base) > kMaxDistance;
  return stated ? entry.statedBase : entry.base;
}

}  // namespace

IsoMovie ReadMovie(FileWindow& file, const IsoBox& moov) {
  IsoMovie movie;
  IsoBoxes boxes(file, moov);
  while (const auto box = boxes.Next()) {
    if (box->type == FourCC("mvhd")) {
      const Times times = ReadTimes(file.At(box->body, std::min<std::uint64_t>(32, box->Size())));
      movie.created = times.created;
      movie.modified = times.modified;
      movie.timescale = times.timescale;
      movie.duration = times.duration;
    } else if (box->type == FourCC("trak") && movie.tracks.size() < kMaxTracks) {
      movie.tracks.push_back(TrackParser(file).Parse(*box));
    } else if (box->type == FourCC("mvex")) {
      ReadFragmentDefaults(file, *box, movie);
    } else if (box->type == FourCC("udta") || box->type == FourCC("meta") ||
               box->type == FourCC("uuid")) {
      movie.texts.push_back(*box);
    }
  }
  return movie;
}

std::pair<std::uint32_t, std::uint32_t> VideoSizeOf(const IsoMovie& movie) {
  const IsoTrack* video = FirstTrack(movie, FourCC("vide"));
  if (video == nullptr) return {0, 0};
  return VideoEntrySize(foundation::ReaderOf(video->entry));
}

void SetMovieFacts(FileWindow& file, const IsoMovie& movie, TXMPMeta& meta) {
  meta.SetProperty(kNsXMP, "CreateDate", DateOf1904(movie.created));
  meta.SetProperty(kNsXMP, "ModifyDate", DateOf1904(movie.modified));

  const IsoTrack* video = FirstTrack(movie, FourCC("vide"));
  if (video != nullptr) {
    SetFrameSize(meta, video->width, video->height);
    SetFrameRate(meta, video->timing.rate);
    SetVideoEntry(foundation::ReaderOf(video->entry), video->width, video->height, meta);
  }
  SetAudioEntries(movie.tracks, meta);
  SetMovieDuration(movie, video, meta);
  SetFileDataRate(meta, file.Size(), movie.duration, movie.timescale);

  const IsoTrack* timecode = FirstTrack(movie, FourCC("tmcd"));
  if (timecode == nullptr) return;
  meta.SetProperty(kNsDM, "tapeName",
                   ReadTimecodeEntry(foundation::ReaderOf(timecode->entry)).reel);
}

void SetFirstFrame(FileWindow& file, const IsoMovie& movie, TXMPMeta& meta) {
  const IsoTrack* video = FirstTrack(movie, FourCC("vide"));
  if (video == nullptr || video->firstChunk == 0) return;
  constexpr std::uint64_t kHeaderBytes = 40;
  if (IsProRes(video->entry)) {
    SetProResFrame(file.At(video->firstChunk, kHeaderBytes), meta);
  } else if (IsVC3(video->entry)) {
    SetVC3Frame(file.At(video->firstChunk, kHeaderBytes), meta);
  } else if (HasUnknownFieldOrder(foundation::ReaderOf(video->entry))) {
    SetAVCFrame(AVCConfiguration(foundation::ReaderOf(video->entry)),
                file.At(video->firstChunk, kMaxFrameBytes), meta);
  }
}

void SetMovieTimecode(FileWindow& file, const IsoMovie& movie, TXMPMeta& meta) {
  const IsoTrack* track = FirstTrack(movie, FourCC("tmcd"));
  if (track == nullptr || track->firstChunk == 0) return;
  const TimecodeEntry entry = ReadTimecodeEntry(foundation::ReaderOf(track->entry));
  // The sample is a frame count from 00:00:00:00.
  const auto counter = file.At(track->firstChunk, 4).U32BE(0);
  if (!counter || entry.base == 0) return;
  const unsigned base = ChooseBase(entry, *counter, movie.created);
  SetStartTimecode(meta, TimecodeOfFrames(*counter, base, entry.drop), entry.rate);
}

}  // namespace Sorvik::xmp
