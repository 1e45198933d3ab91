// SPDX-License-Identifier: MIT
#include "xmp/readers/SubtitleTelemetryReader.h"

#include <algorithm>
#include <string_view>

#include "foundation/Paths.h"
#include "xmp/Namespaces.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

// The first subtitle begins with a number and its times.
constexpr std::size_t kMaxStart = 256;
constexpr std::string_view kTimes = " --> ";
// Until the receiver has a position, subtitles have zeros: those in the head are searched.
constexpr unsigned kMaxPositions = 1024;

bool Recognises(const ReaderInput& input) {
  const std::string_view text = input.head.Text();
  return foundation::HasExtension(input.path, ".srt") &&
         text.substr(0, kMaxStart).find(kTimes) != text.npos &&
         (text.find("[latitude") != text.npos || text.find("[iso") != text.npos);
}

// The number after "name:" or "name :", such as "-11.5820"; empty if there is none.
std::string_view NumberAfter(std::string_view text, std::string_view name) {
  const std::size_t at = text.find(name);
  if (at == text.npos) return {};
  const std::size_t begin = text.find_first_not_of(" :", at + name.size());
  if (begin == text.npos) return {};
  const std::size_t end = text.find_first_not_of("+-.0123456789", begin);
  return text.substr(begin, std::min(end, text.size()) - begin);
}

struct Degrees {
  Rate size;
  bool isNegative = false;

  bool IsKnown() const { return size.Known(); }
};

Degrees ParseDegrees(std::string_view text) {
  Degrees degrees;
  if (text.starts_with('-') || text.starts_with('+')) {
    degrees.isNegative = text.front() == '-';
    text.remove_prefix(1);
  }
  degrees.size = DecimalFraction(text);
  return degrees;
}

void SetDegrees(const char* property, const Degrees& degrees, const char* references,
                TXMPMeta& meta) {
  SetGPSCoordinate(meta, property, {degrees.size, Rate{0, 1}, Rate{0, 1}},
                   references[degrees.isNegative ? 1 : 0]);
}

// Returns false if the subtitle has no position.
bool SetPosition(std::string_view subtitle, TXMPMeta& meta) {
  const Degrees latitude = ParseDegrees(NumberAfter(subtitle, "[latitude"));
  // One generation of cameras misspells it.
  std::string_view text = NumberAfter(subtitle, "[longitude");
  if (text.empty()) text = NumberAfter(subtitle, "[longtitude");
  const Degrees longitude = ParseDegrees(text);
  if (!latitude.IsKnown() || !longitude.IsKnown()) return false;
  SetDegrees("GPSLatitude", latitude, "NS", meta);
  SetDegrees("GPSLongitude", longitude, "EW", meta);
  const Degrees altitude = ParseDegrees(NumberAfter(subtitle, "abs_alt"));
  if (altitude.IsKnown()) {
    meta.SetProperty(kNsEXIF, "GPSAltitude",
                     std::to_string(altitude.size.num) + "/" + std::to_string(altitude.size.den));
    meta.SetProperty(kNsEXIF, "GPSAltitudeRef", altitude.isNegative ? "1" : "0");
  }
  return true;
}

// "2024-01-01 12:00:00.033" on a line of its own, in local time.
void SetDate(std::string_view text, TXMPMeta& meta) {
  constexpr unsigned kMaxLines = 16;
  for (unsigned i = 0; i < kMaxLines && !text.empty(); ++i) {
    if (const auto date = ParseDate(text)) return SetRecordingDate(meta, *date);
    const std::size_t end = text.find('\n');
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
  }
}

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (!Recognises(input)) return;
  output.hasNative = true;
  const std::string_view text = input.head.Text();
  SetDate(text, output.native);
  std::size_t at = text.find(kTimes);
  for (unsigned i = 0; i < kMaxPositions && at != text.npos; ++i) {
    const std::size_t next = text.find(kTimes, at + kTimes.size());
    if (SetPosition(text.substr(at, next - at), output.native)) return;
    at = next;
  }
}

}  // namespace

const Reader kSubtitleTelemetryReader = {"subtitle telemetry", Recognises, Read};

}  // namespace Sorvik::xmp
