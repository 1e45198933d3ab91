// SPDX-License-Identifier: MIT
// Setters that store native facts as XMP properties, shared by all readers. Forms: ISO 16684-1 and
// the tables of its companion parts. Impossible values (a rate of 0, month 13) are not stored.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "xmp/XMPMeta.h"

namespace Sorvik::xmp {

// Frames or samples per second, as an exact fraction. A numerator or denominator of 0 means
// unknown.
struct Rate {
  std::uint64_t num = 0;
  std::uint64_t den = 0;

  bool Known() const noexcept { return num != 0 && den != 0; }
  friend bool operator==(const Rate&, const Rate&) = default;
};

// Reduces to lowest terms. A rate within 1e-4 of one of the eight standard rates becomes that rate,
// so 2997/100 becomes 30000/1001.
Rate Normalise(Rate rate);

// Returns the standard rate nearest to `perSecond` if it is within that relative deviation,
// otherwise an unknown rate.
Rate NearestStandardRate(double perSecond, double maxDeviation);

// Decodes two BCD digits after clearing the bits outside `mask`. Returns nullopt if a digit is
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
// "YYYY-MM-DDThh:mm:ss", with ".mmm" unless the milliseconds are 0; no time zone. Empty if invalid.
std::string DateText(const DateTime& date);
// The date in UTC, with "Z", of a number of seconds since 1904. Empty for dates before 1970, which
// come from clocks that were never set.
std::string DateOf1904(std::uint64_t seconds);
// Parses the date and time at the start of `text`, which must have exactly that form ("-", ":" and
// " " or "T" as separators). Returns nullopt if it doesn't.
std::optional<DateTime> ParseDate(std::string_view text);

struct Timecode {
  unsigned hours = 0;
  unsigned minutes = 0;
  unsigned seconds = 0;
  unsigned frames = 0;
  bool drop = false;

  friend bool operator==(const Timecode&, const Timecode&) = default;
};
// The timecode of a frame count since 00:00:00:00, with `base` frames per second in its text.
// Drop-frame counting needs a multiple of 30. Wraps to 0 after 24 hours. Returns zero if `base` is
// 0.
Timecode TimecodeOfFrames(std::uint64_t frames, unsigned base, bool drop);
// Decodes the four BCD bytes of DV and AVCHD: frames (bit 6 is the drop flag), seconds, minutes,
// hours. Returns nullopt if they aren't digits or not a valid time.
std::optional<Timecode> TimecodeFromBCD(const std::array<std::byte, 4>& bytes);
std::string TimecodeText(const Timecode& timecode);

// xmpDM:videoFrameRate, a decimal with at most 3 fractional digits.
void SetFrameRate(TXMPMeta& meta, Rate rate);
// xmpDM:duration, `frames` units of the rate.
void SetDuration(TXMPMeta& meta, std::uint64_t frames, Rate rate);
// xmpDM:startTimecode. The time format is set only for rates that have one.
void SetStartTimecode(TXMPMeta& meta, const Timecode& timecode, Rate rate);
// xmpDM:videoFrameSize in pixels.
void SetFrameSize(TXMPMeta& meta, std::uint32_t width, std::uint32_t height);
// xmpDM:videoPixelAspectRatio, in lowest terms.
void SetPixelAspectRatio(TXMPMeta& meta, std::uint64_t width, std::uint64_t height);
// xmpDM:videoPixelDepth from the bits per component.
void SetPixelDepth(TXMPMeta& meta, unsigned bits);
// xmpDM:videoColorSpace from colour primaries, or matrix coefficients if these are unspecified
// (ITU-T H.273).
void SetColorSpace(TXMPMeta& meta, unsigned primaries, unsigned matrix);
// xmpDM:audioSampleRate, xmpDM:audioSampleType from the bits per sample, xmpDM:audioChannelType. 0
// means unknown.
void SetAudioSampleRate(TXMPMeta& meta, std::uint64_t perSecond);
void SetAudioSampleBits(TXMPMeta& meta, unsigned bits);
void SetAudioChannels(TXMPMeta& meta, unsigned channels);
// xmp:CreateDate and xmpDM:shotDate, the time of recording. `zone` is "", "Z" or "+hh:mm".
void SetRecordingDate(TXMPMeta& meta, const DateTime& date, std::string_view zone = {});
// exif:GPSLatitude or exif:GPSLongitude from degrees, minutes and seconds (each a fraction), stored
// as degrees and decimal minutes: "48,12.49200N". `reference` is N, S, E or W.
void SetGPSCoordinate(TXMPMeta& meta, std::string_view name, const std::array<Rate, 3>& parts,
                      char reference);

}  // namespace Sorvik::xmp
