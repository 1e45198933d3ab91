// SPDX-License-Identifier: MIT
// Sample descriptions of ISO base media files: the format of a track's samples.
// Facts: ISO/IEC 14496-12, 12.1 and 12.2, 14496-1 and -3; ETSI TS 102 366, annex F; QuickTime File
// Format, "Media Data Atom Types".
#pragma once

#include <string>
#include <vector>

#include "xmp/NativeValues.h"
#include "xmp/readers/IsoTracks.h"

namespace Sorvik::xmp {

// Size in pixels, codec, pixel aspect ratio, field order and colour space.
void SetVideoEntry(foundation::ByteReader entry, TXMPMeta& meta);

// The first audio track; if each channel has a separate track, the number of these tracks.
void SetAudioEntries(const std::vector<IsoTrack>& tracks, TXMPMeta& meta);

struct TimecodeEntry {
  unsigned base = 0;  // frames per second of the timecode text; 0 unknown
  bool drop = false;
  Rate rate;
  std::string reel;
};
TimecodeEntry ReadTimecodeEntry(foundation::ByteReader entry);

}  // namespace Sorvik::xmp
