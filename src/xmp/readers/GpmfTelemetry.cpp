// SPDX-License-Identifier: MIT
#include "xmp/readers/GpmfTelemetry.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "xmp/Namespaces.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

constexpr int kMaxDepth = 8;
constexpr unsigned kMaxItems = 4096;
// A sample has the telemetry of one second: 5 to 20 kB.
constexpr std::uint64_t kMaxSampleBytes = 64 * 1024;
constexpr std::uint32_t kMinFix = 2;  // GPSF: 0 none, 2 and 3 dimensions

// Key, type, size of a structure, number of structures; then the structures, padded to four bytes.
struct Item {
  std::uint32_t key = 0;
  char type = 0;
  std::uint64_t structSize = 0;
  ByteReader value;
};

// What precedes the positions of a stream.
struct Stream {
  std::uint32_t fix = 0;
  std::string time;  // "yymmddhhmmss.sss", UTC
  ByteReader scale;
};

std::int64_t Signed(std::optional<std::uint32_t> value) {
  return static_cast<std::int32_t>(value.value_or(0));
}

// The fraction that an integer means with its scale.
Rate Scaled(std::int64_t value, std::int64_t scale) {
  return {static_cast<std::uint64_t>(std::abs(value)), static_cast<std::uint64_t>(std::abs(scale))};
}

void SetPosition(ByteReader position, ByteReader scale, TXMPMeta& meta) {
  if (meta.HasProperty(kNsEXIF, "GPSLatitude") || !position.Holds(0, 12)) return;
  const std::int64_t latitude = Signed(position.U32BE(0));
  const std::int64_t longitude = Signed(position.U32BE(4));
  const std::int64_t altitude = Signed(position.U32BE(8));
  // One scale for all numbers, or one for each.
  const bool isSingle = !scale.Holds(4, 4);
  const auto scaleAt = [&](std::uint64_t at) { return Signed(scale.U32BE(isSingle ? 0 : at)); };
  if (scaleAt(0) <= 0 || scaleAt(4) <= 0 || (latitude == 0 && longitude == 0)) return;
  const auto set = [&meta](const char* name, std::int64_t value, std::int64_t divisor,
                           const char* references) {
    SetGPSCoordinate(meta, name, {Scaled(value, divisor), Rate{0, 1}, Rate{0, 1}},
                     references[value < 0 ? 1 : 0]);
  };
  set("GPSLatitude", latitude, scaleAt(0), "NS");
  set("GPSLongitude", longitude, scaleAt(4), "EW");
  if (scaleAt(8) <= 0) return;
  meta.SetProperty(kNsEXIF, "GPSAltitude",
                   std::to_string(std::abs(altitude)) + "/" + std::to_string(scaleAt(8)));
  meta.SetProperty(kNsEXIF, "GPSAltitudeRef", altitude < 0 ? "1" : "0");
}

void SetTime(const DateTime& time, TXMPMeta& meta) {
  const std::string text = DateText(time);
  if (!text.empty()) meta.SetProperty(kNsEXIF, "GPSTimeStamp", text + "Z");
}

std::optional<DateTime> ParseTime(std::string_view text) {
  constexpr std::size_t kSize = 16;
  if (text.size() < kSize) return std::nullopt;
  constexpr unsigned kInvalid = 1'000'000;  // above the range of every part
  const auto number = [text](std::size_t at, std::size_t count) {
    unsigned value = 0;
    for (const char c : text.substr(at, count)) {
      if (c < '0' || c > '9') return kInvalid;
      value = value * 10 + static_cast<unsigned>(c - '0');
    }
    return value;
  };
  return DateTime{2000 + number(0, 2), number(2, 2),  number(4, 2), number(6, 2),
                  number(8, 2),        number(10, 2), number(13, 3)};
}

// Latitude, longitude, altitude, two speeds.
void SetGPS5(const Item& item, const Stream& stream, TXMPMeta& meta) {
  if (stream.fix < kMinFix || item.type != 'l') return;
  SetPosition(item.value, stream.scale, meta);
  if (const auto time = ParseTime(stream.time)) SetTime(*time, meta);
}

// The same, then days since 2000, seconds of the day, accuracy, and the fix of this position.
void SetGPS9(const Item& item, const Stream& stream, TXMPMeta& meta) {
  constexpr std::uint64_t kSize = 32;
  constexpr std::int64_t kMaxDays = 36'525;
  if (item.structSize != kSize || item.value.U16BE(30).value_or(0) < kMinFix) return;
  SetPosition(item.value, stream.scale, meta);
  const std::int64_t days = Signed(item.value.U32BE(20));
  const std::int64_t scale = Signed(stream.scale.U32BE(24));
  const std::int64_t seconds = scale > 0 ? Signed(item.value.U32BE(24)) / scale : -1;
  if (days < 0 || days > kMaxDays || seconds < 0 || seconds >= 86'400) return;
  using std::chrono::year_month_day, std::chrono::sys_days;
  const year_month_day date(sys_days(std::chrono::year(2000) / 1 / 1) + std::chrono::days(days));
  SetTime({.year = static_cast<unsigned>(static_cast<int>(date.year())),
           .month = static_cast<unsigned>(date.month()),
           .day = static_cast<unsigned>(date.day()),
           .hour = static_cast<unsigned>(seconds / 3600),
           .minute = static_cast<unsigned>(seconds / 60 % 60),
           .second = static_cast<unsigned>(seconds % 60)},
          meta);
}

void SetText(const Item& item, const std::string& text, TXMPMeta& meta) {
  switch (item.key) {
    case FourCC("MINF"):
      meta.SetProperty(kNsTIFF, "Model", text);
      meta.SetProperty(kNsDM, "cameraModel", text);
      break;
    case FourCC("DVNM"):
      // "Hero5 Black"; elsewhere the name of a part, such as "Video Global Settings".
      if (!meta.HasProperty(kNsTIFF, "Model") &&
          (text.starts_with("Hero") || text.starts_with("HERO"))) {
        meta.SetProperty(kNsTIFF, "Model", text);
      }
      break;
    case FourCC("CASN"):
      meta.SetProperty(kNsAux, "SerialNumber", text);
      break;
    case FourCC("FMWR"):
      SetSoftware(meta, text);
      break;
    default:
      break;
  }
}

void SetItem(const Item& item, Stream& stream, TXMPMeta& meta) {
  switch (item.key) {
    case FourCC("GPSF"):
      stream.fix = item.value.U32BE(0).value_or(0);
      return;
    case FourCC("GPSU"):
      stream.time = std::string(item.value.Text());
      return;
    case FourCC("SCAL"):
      stream.scale = item.type == 'l' ? item.value : ByteReader();
      return;
    case FourCC("GPS5"):
      return SetGPS5(item, stream, meta);
    case FourCC("GPS9"):
      return SetGPS9(item, stream, meta);
    default:
      break;
  }
  if (item.type != 'c') return;
  if (const std::string text = NativeText(item.value.Text()); !text.empty()) {
    SetText(item, text, meta);
  }
}

void Walk(ByteReader bytes, int depth, unsigned& budget, TXMPMeta& meta) {
  Stream stream;
  std::uint64_t at = 0;
  while (bytes.Holds(at, 8) && budget > 0) {
    --budget;
    Item item;
    item.key = bytes.U32BE(at).value_or(0);
    item.type = static_cast<char>(bytes.U8(at + 4).value_or(0));
    item.structSize = bytes.U8(at + 5).value_or(0);
    const std::uint64_t size = item.structSize * bytes.U16BE(at + 6).value_or(0);
    if (item.key == 0) return;
    item.value = bytes.Clip(at + 8, size);
    if (item.type != 0) {
      SetItem(item, stream, meta);
    } else if (depth < kMaxDepth) {
      Walk(item.value, depth + 1, budget, meta);
    }
    at += 8 + (size + 3) / 4 * 4;
  }
}

bool WantsTelemetry(const WantedProperties& wanted) {
  return wanted.Wants(kNsEXIF, "GPSLatitude") || wanted.Wants(kNsEXIF, "GPSLongitude") ||
         wanted.Wants(kNsTIFF, "Model");
}

}  // namespace

void SetGpmfFacts(ByteReader bytes, TXMPMeta& meta) {
  unsigned budget = kMaxItems;
  Walk(bytes, 0, budget, meta);
}

void SetTelemetryTrack(FileWindow& file, const IsoMovie& movie, const WantedProperties& wanted,
                       TXMPMeta& meta) {
  const auto track = std::ranges::find_if(movie.tracks, &IsoTrack::IsTelemetry);
  if (track == movie.tracks.end() || track->firstChunk == 0 || !WantsTelemetry(wanted)) return;
  SetGpmfFacts(file.At(track->firstChunk, kMaxSampleBytes), meta);
}

}  // namespace Sorvik::xmp
