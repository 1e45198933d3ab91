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

// The type of the sample description that would name the codec of an 'esds' box of video, the body
// of which is `esds`: entries of MPEG-4 contain MPEG-2, too. 0 if it is MPEG-4 or unknown.
std::uint32_t VideoFormatOf(foundation::ByteReader esds);

// The type of the entry, whose child boxes start at `boxes`; for an encrypted track, the type
// before encryption.
std::uint32_t OriginalFormat(foundation::ByteReader entry, std::uint64_t boxes);

// The first audio track; if each channel has a separate track, the number of these tracks.
void SetAudioEntries(const std::vector<IsoTrack>& tracks, TXMPMeta& meta);

struct TimecodeEntry {
  unsigned base = 0;        // frames per second of the timecode text, by the clock; 0 unknown
  unsigned statedBase = 0;  // the same as declared by the entry
  bool drop = false;
  Rate rate;
  std::string reel;
};
TimecodeEntry ReadTimecodeEntry(foundation::ByteReader entry);

}  // namespace Sorvik::xmp
