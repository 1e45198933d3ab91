// SPDX-License-Identifier: MIT
// The continuation of a Sony clip, by its record (NonRealTimeMeta, "C0001M01.XML").
//
// Cameras cut a long take at 4 GB on cards formatted with FAT32. Neither the material list nor the
// records declare it: the parts are consecutive clips, whose records show it together.
// Source of the format's facts: records of cameras. Any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/XmlTree.h"

namespace Sorvik::formats::sony {

struct ClipRecord {
  std::string umid;        // hexadecimal digits
  std::string videoCodec;  // "AVC_3840_2160_HP@L51"
  std::uint64_t frames = 0;
  double seconds = 0;  // the duration; 0 if unknown
  // The timecodes of the first and the last frame, as numbers of timecode frames since midnight.
  std::optional<std::uint64_t> start;
  std::optional<std::uint64_t> end;
  std::uint64_t framesPerDay = 0;
  std::optional<std::int64_t> created;  // seconds since 1970, UTC

  static ClipRecord FromRoot(const foundation::XmlElement& root);
  // The record in the file at `path`, read once within a call scope; null if it can't be parsed.
  static std::shared_ptr<const ClipRecord> Of(const std::string& path);
  // Keeps the record of a file that another reader has parsed in the call scope, for Of().
  static void Keep(const std::string& path, const foundation::XmlElement& root);
};

// The part of a UMID that identifies the recording device: bytes 24 to 31, as hexadecimal digits.
// Empty if the UMID is too short.
std::string_view DeviceOfUmid(std::string_view umid);

// True if four facts show that `next` continues `clip`: the timecode, the device, the codec, and
// the creation time (within one second). False if a fact is missing.
bool Continues(const ClipRecord& clip, const ClipRecord& next);

}  // namespace Sorvik::formats::sony
