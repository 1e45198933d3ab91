// SPDX-License-Identifier: MIT
#include "formats/sony/ClipRecord.h"

#include <charconv>
#include <cmath>

#include "foundation/CallScope.h"
#include "foundation/DateTime.h"
#include "foundation/Paths.h"

namespace Sorvik::formats::sony {
namespace {

using foundation::XmlElement;

constexpr std::size_t kMaxBytes = std::size_t{4} << 20;
constexpr std::uint64_t kMaxFrames = std::uint64_t{1} << 40;

std::string_view AttributeOf(const XmlElement* element, std::string_view name) {
  static constexpr std::string_view kWhiteSpace = " \t\r\n";
  if (element == nullptr) return {};
  const std::string_view text = element->Attribute(name);
  const auto begin = text.find_first_not_of(kWhiteSpace);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(kWhiteSpace) - begin + 1);
}

// A number that is all of `text`.
template <class Number, class... Base>
std::optional<Number> Parse(std::string_view text, Base... base) {
  Number number{};
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), number, base...);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// How a clip counts timecode. With half steps two frames share a number (SMPTE 12M).
struct Counting {
  std::uint64_t base = 0;  // 24, 25 or 30
  bool halfStep = false;

  std::uint64_t PerSecond() const { return base * (halfStep ? 2 : 1); }
};

struct TimecodeOfDay {
  std::uint64_t frames;
  bool drop;
};

std::optional<std::uint64_t> FromBCD(std::uint32_t value) {
  const std::uint32_t tens = value >> 4;
  const std::uint32_t ones = value & 15;
  if (ones > 9) return std::nullopt;
  return tens * 10 + ones;
}

// The frames that drop frame counting leaves out until a time of day: two numbers (with half steps
// four) at the start of each minute that isn't a multiple of ten.
std::uint64_t DroppedFrames(std::uint64_t minutes, const Counting& counting) {
  return (minutes - minutes / 10) * 2 * (counting.halfStep ? 2 : 1);
}

// The word is frames, seconds, minutes and hours in BCD, and flags in the bits that digits leave.
std::optional<TimecodeOfDay> ParseWord(std::string_view text, const Counting& counting) {
  const auto word = Parse<std::uint32_t>(text, 16);
  if (text.size() != 8 || !word || counting.base == 0) return std::nullopt;
  const auto frames = FromBCD(*word >> 24 & 0x3F);
  const auto seconds = FromBCD(*word >> 16 & 0x7F);
  const auto minutes = FromBCD(*word >> 8 & 0x7F);
  const auto hours = FromBCD(*word & 0x3F);
  if (!frames || !seconds || !minutes || !hours || *frames >= counting.base || *seconds > 59 ||
      *minutes > 59 || *hours > 23) {
    return std::nullopt;
  }
  const bool drop = counting.base == 30 && (*word >> 24 & 0x40) != 0;
  std::uint64_t frame = *frames;
  if (counting.halfStep) {
    // The flag of the second frame of a pair is in another byte with a base of 25.
    const std::uint32_t second = counting.base == 25 ? *word & 0x80 : *word >> 16 & 0x80;
    frame = 2 * frame + (second != 0 ? 1 : 0);
  }
  const std::uint64_t allMinutes = *hours * 60 + *minutes;
  const std::uint64_t count = (allMinutes * 60 + *seconds) * counting.PerSecond() + frame;
  return TimecodeOfDay{count - (drop ? DroppedFrames(allMinutes, counting) : 0), drop};
}

void ReadTimecodes(const XmlElement* table, const Counting& counting, ClipRecord& record) {
  if (table == nullptr) return;
  for (const XmlElement* change : table->ChildrenNamed("LtcChange")) {
    const auto time = ParseWord(AttributeOf(change, "value"), counting);
    if (!time) continue;
    constexpr std::uint64_t kMinutesPerDay = 24 * 60;
    record.framesPerDay = kMinutesPerDay * 60 * counting.PerSecond() -
                          (time->drop ? DroppedFrames(kMinutesPerDay, counting) : 0);
    if (AttributeOf(change, "frameCount") == "0") record.start = time->frames;
    if (AttributeOf(change, "status") == "end") record.end = time->frames;
  }
}

// Frames per second of "25p" or "59.94i"; interlaced rates count fields. 0 if unknown.
double RateOfText(std::string_view text) {
  if (text.size() < 2 || (text.back() != 'p' && text.back() != 'i')) return 0;
  const auto rate = Parse<double>(text.substr(0, text.size() - 1));
  if (!rate || !std::isfinite(*rate) || *rate <= 0) return 0;
  return text.back() == 'i' ? *rate / 2 : *rate;
}

// Records without a rate have a timecode base, on which 24 and 30 mean the NTSC rates.
double RateOfCounting(const Counting& counting) {
  const auto rate = static_cast<double>(counting.PerSecond());
  return counting.base == 25 ? rate : rate * 1000 / 1001;
}

struct KeptRecord {
  std::shared_ptr<const ClipRecord> record;
};

}  // namespace

ClipRecord ClipRecord::FromRoot(const XmlElement& root) {
  ClipRecord record;
  const XmlElement* table = root.Child("LtcChangeTable");
  const XmlElement* frame = root.Find({"VideoFormat", "VideoFrame"});
  Counting counting;
  const auto base = Parse<std::uint64_t>(AttributeOf(table, "tcFps"));
  if (base && (*base == 24 || *base == 25 || *base == 30)) counting.base = *base;
  counting.halfStep = AttributeOf(table, "halfStep") == "true";
  record.umid = AttributeOf(root.Child("TargetMaterial"), "umidRef");
  record.videoCodec = AttributeOf(frame, "videoCodec");
  const auto frames = Parse<std::uint64_t>(AttributeOf(root.Child("Duration"), "value"));
  if (frames && *frames < kMaxFrames) record.frames = *frames;
  double rate = RateOfText(AttributeOf(frame, "formatFps"));
  if (rate == 0) rate = RateOfCounting(counting);
  if (rate > 0) record.seconds = static_cast<double>(record.frames) / rate;
  record.created = foundation::SecondsSince1970(AttributeOf(root.Child("CreationDate"), "value"));
  ReadTimecodes(table, counting, record);
  return record;
}

std::shared_ptr<const ClipRecord> ClipRecord::Of(const std::string& path) {
  return foundation::CallScope::Remember<KeptRecord>(
             path,
             [&path] {
               const auto document = foundation::ReadXmlFile(path, {.bytes = kMaxBytes});
               if (!document) return KeptRecord{};
               return KeptRecord{std::make_shared<const ClipRecord>(FromRoot(document->Root()))};
             })
      ->record;
}

void ClipRecord::Keep(const std::string& path, const XmlElement& root) {
  foundation::CallScope::Remember<KeptRecord>(
      path, [&root] { return KeptRecord{std::make_shared<const ClipRecord>(FromRoot(root))}; });
}

std::string_view DeviceOfUmid(std::string_view umid) {
  constexpr std::size_t kBegin = 48;
  constexpr std::size_t kSize = 16;
  return umid.size() < kBegin + kSize ? std::string_view() : umid.substr(kBegin, kSize);
}

bool Continues(const ClipRecord& clip, const ClipRecord& next) {
  if (!clip.end || !next.start || clip.framesPerDay == 0 ||
      clip.framesPerDay != next.framesPerDay ||
      (*clip.end + 1) % clip.framesPerDay != *next.start) {
    return false;
  }
  const std::string_view device = DeviceOfUmid(clip.umid);
  if (device.empty() || !foundation::EqualIgnoringCase(device, DeviceOfUmid(next.umid))) {
    return false;
  }
  if (clip.videoCodec.empty() || clip.videoCodec != next.videoCodec) return false;
  if (!clip.created || !next.created || clip.seconds <= 0) return false;
  const double expected = static_cast<double>(*clip.created) + clip.seconds;
  return std::abs(static_cast<double>(*next.created) - expected) <= 1.0;
}

}  // namespace Sorvik::formats::sony
