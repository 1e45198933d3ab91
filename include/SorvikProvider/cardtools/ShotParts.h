// SPDX-License-Identifier: MIT
// The files that one entry consists of, in playing order: a recording that a camera cut into
// several files, or wrote as separate files for picture and sound. For hosts that play or hand over
// a shot without rewriting it.
//
//   const ShotParts shot = GetShotParts("/media/CARD", id, "0001AB");
//   for (const ShotPart& part : shot.parts) ...
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/Hestra.h"
#include "SorvikProvider/foundation/ImmutableString.h"
#include "SorvikProvider/foundation/Messaging.h"
#include "SorvikProvider/frame/ProviderMessages.h"
#include "SorvikProvider/frame/ProviderRequest.h"

namespace Sorvik {

// Frames per second as a fraction: 30000/1001. Unknown if the numerator is 0.
struct ShotRate {
  std::uint64_t numerator = 0;
  std::uint64_t denominator = 1;

  bool IsKnown() const noexcept { return numerator != 0 && denominator != 0; }
  friend bool operator==(const ShotRate&, const ShotRate&) = default;
};

// What a file contributes to the shot.
enum class ShotTrack { kPictureAndSound, kPicture, kSound };

// The frames of an image sequence: files in one folder, numbered in their names.
struct ImageSequence {
  std::string prefix;  // of the file names, up to the number
  std::string suffix;  // after the number, with the extension
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  unsigned digits = 0;        // minimum number of digits, padded with zeros
  std::uint64_t missing = 0;  // how many numbers between the first and the last have no file
};

struct ShotPart {
  // What the camera calls it: mostly the title of the file. Not empty.
  std::string name;
  // The file in UTF-8, or the folder of an image sequence. If the part is missing, where it should
  // be; empty if that is unknown.
  std::string path;
  ShotTrack track = ShotTrack::kPictureAndSound;
  unsigned channel = 0;   // of a sound track: 1, 2, ...; 0 for a file with all channels
  bool isPresent = true;  // false: the camera recorded it, but there is no such file
  // That it continues the part before it isn't recorded, but follows from timecode, time, device
  // and codec.
  bool isInferred = false;
  // Number of frames of the shot in this file; nullopt if unknown. The length of a missing part
  // comes from an index, or from the timecodes of the parts around it.
  std::optional<std::uint64_t> frames;
  // Number of frames of the file in front of the shot, and after it. Not 0 only for a recording
  // that was cut on the card.
  std::uint64_t firstFrame = 0;
  std::uint64_t framesAfter = 0;
  // The time stamp of the shot's first frame on the clock of the file, in microseconds. nullopt if
  // the container has no clock of its own or wasn't read.
  std::optional<std::int64_t> stampMicroseconds;
  // "HH:MM:SS:FF" of the first frame of the shot in this file, with ";" before the frames if the
  // timecode drops numbers; empty if unknown.
  std::string startTimecode;
  // The same as the number of frames since 00:00:00:00.
  std::optional<std::uint64_t> startFrame;
  // How far after the start of this file the next file of the track starts, in microseconds. A
  // player that places each file by its earliest time stamp (a file with `firstFrame` by
  // `stampMicroseconds`) joins the pictures exactly with it. For the last part, its length. nullopt
  // if the number of frames or the rate is unknown.
  std::optional<std::int64_t> joinMicroseconds;
  std::optional<ImageSequence> images;
};

struct ShotParts {
  // Track by track: pictures (or pictures and sound) first, then the channels. The parts of one
  // track are in playing order. Empty if there is no such entry.
  std::vector<ShotPart> parts;
  ShotRate rate;           // of the pictures
  bool isComplete = true;  // no part is missing, as far as the card's data shows

  // The parts of the first track.
  std::vector<const ShotPart*> MainTrack() const {
    std::vector<const ShotPart*> main;
    for (const ShotPart& part : parts) {
      const ShotPart& first = parts.front();
      if (part.track == first.track && part.channel == first.channel) main.push_back(&part);
    }
    return main;
  }
};

// Returns the parts of the entry `key` of the structure at `path`, as the provider
// `identification` lists it. For an entry of one file that is one part. A part of a recording that
// the listing merges has no entry of its own. Reads indexes and clip records, and the head and the
// tail of media files whose container requires it; searches cards next to this one like a listing.
// An aborted `request` ends it early with an empty result. Never throws for bad data. Any thread,
// between ProviderHost::Initialize and the last Shutdown.
SORVIK_EXPORT ShotParts GetShotParts(const std::string& path, const std::string& identification,
                                     const std::string& key, ProviderRequest* request = nullptr);

// The number of frames between 00:00:00:00 and a timecode such as "10:20:00:00" or "10:20:00;00",
// which counts at the rate rounded to an integer. nullopt if it isn't a timecode.
SORVIK_EXPORT std::optional<std::uint64_t> FramesOfTimecode(const std::string& timecode,
                                                            const ShotRate& rate);
// The reverse; with `dropFrame` the numbers are skipped that a timecode at 30000/1001 or
// 60000/1001 skips. Passes midnight. Empty if the rate is unknown.
SORVIK_EXPORT std::string TimecodeOfFrames(std::uint64_t frames, const ShotRate& rate,
                                           bool dropFrame);

// A known rate with at most three decimals: "25", "29.97".
SORVIK_EXPORT std::string DecimalRate(const ShotRate& rate);

struct SORVIK_EXPORT ShotPartsMessage : Hestra::MessageImpl<ShotPartsMessage>,
                                        Hestra::Allocated<ShotPartsMessage> {
  ShotParts shot;
  std::string path;
  std::string identification;
  std::string key;
  ContentResultCode result = kResultDone;  // kResultNoContent: no such entry; or kResultAborted

  ~ShotPartsMessage() override;
};

// What RequestShotParts queues; ends in a ShotPartsMessage.
class SORVIK_EXPORT ShotPartsRequest final : public ProviderRequest {
 public:
  ShotPartsRequest(tarnwick::utility::ImmutableString station, std::string path,
                   std::string identification, std::string key);
  void Run() override;
  Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() override;

 private:
  void PostAborted() const override;
  ShotPartsMessage EmptyMessage() const;

  std::string path_;
  std::string identification_;
  std::string key_;
};

// Runs GetShotParts on the provider executor. The result is posted to `station`; the returned
// reference can abort it.
SORVIK_EXPORT Hestra::InterfaceRef<ShotPartsRequest, Hestra::IThreadedQueueRequest>
RequestShotParts(const std::string& path, const std::string& identification, const std::string& key,
                 tarnwick::utility::ImmutableString station);

}  // namespace Sorvik
