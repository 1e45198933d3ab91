// SPDX-License-Identifier: MIT
// The tracks of Matroska files: video and audio as properties.
// Facts: RFC 9559, 5.1.4, and the Matroska codec mappings.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "xmp/NativeValues.h"
#include "xmp/readers/Ebml.h"

namespace Sorvik::xmp {

struct MatroskaTrack {
  std::uint64_t number = 0;  // of its blocks
  std::uint64_t type = 0;    // 1 video, 2 audio
  std::uint64_t uid = 0;
  std::string codec;  // "V_MPEG4/ISO/AVC"
  std::string setup;  // initialisation data of the codec
  std::uint64_t frameNanoseconds = 0;
  // Video.
  std::uint32_t width = 0;  // without the cropped parts
  std::uint32_t height = 0;
  std::uint64_t displayWidth = 0;
  std::uint64_t displayHeight = 0;
  std::uint64_t displayUnit = 0;
  std::uint64_t interlaced = 0;
  std::uint64_t fieldOrder = 2;  // undetermined
  unsigned depth = 0;
  unsigned primaries = 0;
  unsigned matrix = 0;
  // Audio.
  double sampleRate = 8000;
  unsigned channels = 1;
  unsigned sampleBits = 0;

  Rate FrameRate() const;
};

std::vector<MatroskaTrack> ReadMatroskaTracks(FileWindow& file, const EbmlElement& tracks);

// Whether facts about the video are only in its first frame.
bool NeedsFirstFrame(const MatroskaTrack& track);

// `frame` is the beginning of the first frame; it may be empty.
void SetMatroskaVideo(const MatroskaTrack& track, foundation::ByteReader frame, TXMPMeta& meta);
// The sound of the first track. Tracks with one channel each are the channels of one recording.
void SetMatroskaAudio(const std::vector<MatroskaTrack>& tracks, TXMPMeta& meta);

}  // namespace Sorvik::xmp
