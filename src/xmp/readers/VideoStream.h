// SPDX-License-Identifier: MIT
// Facts from the head of an elementary video stream: H.264 (ITU-T H.264) with the recording block
// of AVCHD cameras, and MPEG-2 (ISO/IEC 13818-2).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "foundation/ByteReader.h"
#include "xmp/NativeValues.h"

namespace Sorvik::xmp {

struct VideoFacts {
  std::uint32_t width = 0;  // 0: no sequence header was found
  std::uint32_t height = 0;
  Rate rate;                      // of frames
  std::uint64_t aspectWidth = 0;  // of a sample; 0 unknown
  std::uint64_t aspectHeight = 0;
  unsigned depth = 8;
  unsigned primaries = 0;  // ITU-T H.273; 0 unknown
  unsigned matrix = 0;
  const char* fieldOrder = nullptr;          // "Upper", "Lower", "Progressive"
  std::optional<unsigned> pictureStructure;  // of the first picture timing of AVC; 0: a frame
  bool mpeg1 = false;                        // MPEG-1 instead of MPEG-2
  std::optional<Timecode> gopTimecode;       // of the first group of pictures
  // The recording block of the first picture that has one, without its name and emulation
  // prevention bytes. Empty if there is none.
  std::vector<std::byte> recordingBlock;
};

// Returns the offset of the next 00 00 01 at or after `from`; the size of the stream if there is
// none. Fast: most bytes are skipped.
std::uint64_t FindStartCode(foundation::ByteReader stream, std::uint64_t from) noexcept;

VideoFacts ReadAVC(foundation::ByteReader stream);
// The same of one sequence parameter set. The field order of interlaced video is unknown.
VideoFacts ReadAVCSequence(foundation::ByteReader nal);
// Of H.265, from the first sequence parameter set. Aspect ratio, colours and rate are unknown if it
// predicts reference sets.
VideoFacts ReadHEVC(foundation::ByteReader stream);
VideoFacts ReadHEVCSequence(foundation::ByteReader nal);
// Of AV1, from its first sequence header.
VideoFacts ReadAV1(foundation::ByteReader units);
// Of MPEG-1, too, which has the same headers without extensions.
VideoFacts ReadMPEG2(foundation::ByteReader stream);

// The number of frames from the earliest of the `first` presentation times of a file to the latest
// of the `last` ones. Times have 90 kHz and 33 bits, and wrap. Returns nullopt if there are none.
std::optional<std::uint64_t> CountFrames(const std::vector<std::uint64_t>& first,
                                         const std::vector<std::uint64_t>& last, Rate rate);

}  // namespace Sorvik::xmp
