// SPDX-License-Identifier: MIT
// The forms in which readers of native metadata store their facts as XMP properties, the same for
// every kind of file. Forms: ISO 16684-1 and the tables of its companion parts. A fact that can't
// be true (a rate of 0, month 13) is not stored.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "xmp/XMPMeta.h"

namespace Sorvik::xmp {

// Frames or samples a second, as an exact fraction. A part of 0 means unknown.
struct Rate {
  std::uint64_t num = 0;
  std::uint64_t den = 0;

  bool Known() const noexcept { return num != 0 && den != 0; }
  friend bool operator==(const Rate&, const Rate&) = default;
};

// In lowest terms. Within 1e-4 of one of the eight usual rates it becomes that rate, so that
// 2997/100 is 30000/1001.
Rate Normalise(Rate rate);

// Two decimal digits in one byte, with the bits outside `mask` cleared first; nothing if a digit is
// above 9.
std::optional<unsigned> FromBCD(std::byte value, unsigned mask = 0xFF) noexcept;

struct DateTime {
  unsigned year = 0;
  unsigned month = 0;
  unsigned day = 0;
  unsigned hour = 0;
  unsigned minute = 0;
  unsigned second = 0;
  unsigned millisecond = 0;

  bool Valid() const noexcept;
};
// "YYYY-MM-DDThh:mm:ss", with ".mmm" unless the milliseconds are 0; no zone. Empty if not valid.
std::string DateText(const DateTime& date);
// The date and time in which a string of that exact form begins ("-", ":" and " " or "T" between).
std::optional<DateTime> ParseDate(std::string_view text);

struct Timecode {
  unsigned hours = 0;
  unsigned minutes = 0;
  unsigned seconds = 0;
  unsigned frames = 0;
  bool drop = false;

  friend bool operator==(const Timecode&, const Timecode&) = default;
};
// The timecode of a count of frames since 00:00:00:00, `base` frames to the second of its text. A
// drop count is only possible for a multiple of 30. Runs on behind 24 hours from 0. A base of 0
// gives zero.
Timecode TimecodeOfFrames(std::uint64_t frames, unsigned base, bool drop);
// The four BCD bytes of DV and AVCHD: frames (bit 6 the drop flag), seconds, minutes, hours.
// Nothing if they aren't digits or no time.
std::optional<Timecode> TimecodeFromBCD(const std::array<std::byte, 4>& bytes);
std::string TimecodeText(const Timecode& timecode);

// xmpDM:videoFrameRate, as a decimal with at most 3 digits behind the point.
void SetFrameRate(TXMPMeta& meta, Rate rate);
// xmpDM:duration: `frames` units of the rate.
void SetDuration(TXMPMeta& meta, std::uint64_t frames, Rate rate);
// xmpDM:startTimecode; its format only where the rate has one.
void SetStartTimecode(TXMPMeta& meta, const Timecode& timecode, Rate rate);
// xmpDM:videoFrameSize in pixels.
void SetFrameSize(TXMPMeta& meta, std::uint32_t width, std::uint32_t height);
// xmpDM:videoPixelAspectRatio, reduced.
void SetPixelAspectRatio(TXMPMeta& meta, std::uint64_t width, std::uint64_t height);
// xmpDM:videoPixelDepth from the bits of one component.
void SetPixelDepth(TXMPMeta& meta, unsigned bits);
// xmpDM:audioSampleRate, audioSampleType from the bits of a sample, audioChannelType. 0 is unknown.
void SetAudioSampleRate(TXMPMeta& meta, std::uint64_t perSecond);
void SetAudioSampleBits(TXMPMeta& meta, unsigned bits);
void SetAudioChannels(TXMPMeta& meta, unsigned channels);
// xmp:CreateDate and xmpDM:shotDate, the moment of recording. `zone` is "", "Z" or "+hh:mm".
void SetRecordingDate(TXMPMeta& meta, const DateTime& date, std::string_view zone = {});
// exif:GPSLatitude or GPSLongitude from degrees, minutes and seconds, each a fraction, as degrees
// and decimal minutes: "48,12.49200N". `reference` is N, S, E or W.
void SetGPSCoordinate(TXMPMeta& meta, std::string_view name, const std::array<Rate, 3>& parts,
                      char reference);

}  // namespace Sorvik::xmp
