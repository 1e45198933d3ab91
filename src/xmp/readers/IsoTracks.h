// SPDX-License-Identifier: MIT
// The tracks of an ISO base media file: picture, sound and timecode as properties.
// Facts: ISO/IEC 14496-12, clauses 8 and 12; QuickTime File Format, "Media Data Atom Types".
#pragma once

#include "xmp/readers/IsoBoxes.h"

namespace Sorvik::xmp {

// What is kept of one track.
struct IsoTrack {
  std::uint32_t handler = 0;    // 'vide', 'soun', 'tmcd', ...
  std::uint32_t timescale = 0;  // units a second
  std::uint64_t duration = 0;   // in these units
  std::uint64_t samples = 0;
  std::uint32_t sampleUnits = 0;  // of each sample; 0 if they differ
  std::uint32_t width = 0;        // as shown, from the track's header
  std::uint32_t height = 0;
  std::string entry;             // the first sample description, with its size and type
  std::uint64_t firstChunk = 0;  // where the first sample is; 0 unknown
};

// The movie as a whole.
struct IsoMovie {
  std::uint64_t created = 0;  // seconds since 1904, UTC; 0 unknown
  std::uint64_t modified = 0;
  std::uint32_t timescale = 0;
  std::uint64_t duration = 0;
  std::vector<IsoTrack> tracks;
  std::vector<IsoBox> texts;  // its 'udta' and 'meta' boxes
};

IsoMovie ReadMovie(FileWindow& file, const IsoBox& moov);

// Stores the facts of movie and tracks.
void SetMovieFacts(FileWindow& file, const IsoMovie& movie, TXMPMeta& meta);
// xmpDM:startTimecode. The sample of a timecode track lies among the media, which takes a read.
void SetStartOfMovie(FileWindow& file, const IsoMovie& movie, TXMPMeta& meta);

}  // namespace Sorvik::xmp
