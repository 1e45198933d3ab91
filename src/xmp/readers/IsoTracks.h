// SPDX-License-Identifier: MIT
// The tracks of an ISO base media file: video, audio and timecode as properties.
// Facts: ISO/IEC 14496-12, clauses 8 and 12; QuickTime File Format, "Media Data Atom Types".
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "xmp/readers/IsoBoxes.h"
#include "xmp/readers/IsoSampleTimes.h"

namespace Sorvik::xmp {

// The facts kept of one track.
struct IsoTrack {
  std::uint32_t id = 0;
  std::uint32_t handler = 0;    // 'vide', 'soun', 'tmcd', ...
  std::uint32_t timescale = 0;  // units per second
  std::uint64_t duration = 0;   // in these units
  std::uint64_t samples = 0;
  bool empty = false;  // it has no samples by its tables
  SampleTimes times;
  FrameTiming timing;
  std::uint32_t width = 0;  // display size, from the track header
  std::uint32_t height = 0;
  std::string entry;             // the first sample description, with its size and type
  std::uint64_t firstChunk = 0;  // offset of the first sample; 0 unknown

  // Samples in GPMF, the telemetry format of action cameras.
  bool IsTelemetry() const { return std::string_view(entry).substr(0, 8).ends_with("gpmd"); }
};

// The complete movie.
struct IsoMovie {
  std::uint64_t created = 0;  // seconds since 1904, UTC; 0 unknown
  std::uint64_t modified = 0;
  std::uint32_t timescale = 0;
  std::uint64_t duration = 0;
  std::vector<IsoTrack> tracks;
  std::vector<IsoBox> texts;  // its 'udta', 'meta' and 'uuid' boxes
  // Of fragmented movies.
  bool fragmented = false;
  std::uint64_t fragmentDuration = 0;  // of 'mehd', in units of the movie; 0 unknown
  // Track ids and durations of samples, of 'trex'.
  std::vector<std::pair<std::uint32_t, std::uint32_t>> fragmentDefaults;
};

IsoMovie ReadMovie(FileWindow& file, const IsoBox& moov);

// Width and height of the pictures in the first video track; 0 unknown.
std::pair<std::uint32_t, std::uint32_t> VideoSizeOf(const IsoMovie& movie);

// Stores the facts of the movie and its tracks.
void SetMovieFacts(FileWindow& file, const IsoMovie& movie, TXMPMeta& meta);
// Sets facts that are missing in the description of the video track from the header of its first
// frame, which takes a read: of ProRes, and the field order of interlaced AVC.
void SetFirstFrame(FileWindow& file, const IsoMovie& movie, TXMPMeta& meta);
// Sets xmpDM:startTimecode. The sample of a timecode track is in the media data, which takes a
// read.
void SetMovieTimecode(FileWindow& file, const IsoMovie& movie, TXMPMeta& meta);

}  // namespace Sorvik::xmp
