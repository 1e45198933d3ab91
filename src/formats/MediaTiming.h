// SPDX-License-Identifier: MIT
// When the pictures of a media file are presented, on the clock of the file. Two files that are
// played one after the other join exactly if the second one is placed by these times: sound and
// reordered pictures make the earliest time stamp of a file differ from its first picture.
// Reads the head and the tail only: at most some megabytes. Any thread; never throws for bad data.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/platform/FileSystem.h"

namespace Sorvik::formats {

struct MediaTiming {
  // Seconds on the clock of the file.
  double firstStamp = 0;    // the earliest of the first time stamps of all streams
  double firstPicture = 0;  // the picture that is presented first
  std::uint64_t pictures = 0;
  // Pictures per second in lowest terms, of an ISO base media file whose pictures all have the same
  // duration; else 0/1.
  std::uint64_t rateNumerator = 0;
  std::uint64_t rateDenominator = 1;
  // The clock is that of a transport stream: it has an arbitrary start, and goes on in the next
  // file of a recording. It wraps after kTransportClockSeconds.
  bool isTransportClock = false;
  // False: the file is edited in a way that has no single start, or is a truncated fragmented
  // movie. All else is unknown then.
  bool isPlaced = true;
};

inline constexpr double kTransportClockSeconds = 8589934592.0 / 90000.0;  // 2^33 ticks

// The timing of a transport stream (MTS, M2TS, M2T, TS) or an ISO base media file (MP4, MOV),
// recognised by the extension of `path` (UTF-8). `framesPerSecond` is the picture rate. Returns
// nullopt for other containers, whose streams start together (MXF, AVI, DV), and if the file can't
// be read or has no pictures.
std::optional<MediaTiming> ReadMediaTiming(const std::string& path, double framesPerSecond);

// The same for an open file of that container. Of ISO base media files the boxes "moov" and
// "moof" are read.
std::optional<MediaTiming> ReadTransportTiming(const platform::RegularFile& file,
                                               double framesPerSecond);
std::optional<MediaTiming> ReadIsoTiming(const platform::RegularFile& file);

}  // namespace Sorvik::formats
