// SPDX-License-Identifier: MIT
#include "cardtools/ShotJson.h"

#include <charconv>
#include <utility>

namespace Sorvik {
namespace {

using foundation::JsonValue;

constexpr const char* kTracks[] = {"picture and sound", "picture", "sound"};

class ShotWriter {
 public:
  explicit ShotWriter(Hestra::JsonWriter& json) : json_(json) {}

  void WriteShot(const ShotParts& shot) {
    TextOrNull("rate", shot.rate.IsKnown() ? FractionOf(shot.rate) : std::string());
    Boolean("complete", shot.isComplete);
    json_.Key("parts");
    json_.BeginArray();
    for (const ShotPart& part : shot.parts) WritePart(part);
    json_.EndArray();
  }

 private:
  void WritePart(const ShotPart& part) {
    json_.BeginObject();
    Text("name", part.name);
    TextOrNull("path", part.path);
    Text("track", NameOf(part.track));
    Integer("channel", part.channel);
    Boolean("present", part.isPresent);
    Boolean("inferred", part.isInferred);
    IntegerOrNull("frames", part.frames);
    Integer("firstFrame", part.firstFrame);
    Integer("framesAfter", part.framesAfter);
    IntegerOrNull("stampMicroseconds", part.stampMicroseconds);
    TextOrNull("startTimecode", part.startTimecode);
    IntegerOrNull("startFrame", part.startFrame);
    IntegerOrNull("joinMicroseconds", part.joinMicroseconds);
    json_.Key("images");
    if (part.images) {
      WriteImages(*part.images);
    } else {
      json_.Null();
    }
    json_.EndObject();
  }

  void WriteImages(const ImageSequence& images) {
    json_.BeginObject();
    Text("prefix", images.prefix);
    Text("suffix", images.suffix);
    Integer("first", images.first);
    Integer("last", images.last);
    Integer("digits", images.digits);
    Integer("missing", images.missing);
    json_.EndObject();
  }

  void Text(const char* name, const std::string& text) {
    json_.Key(name);
    json_.String(text);
  }
  void TextOrNull(const char* name, const std::string& text) {
    if (!text.empty()) return Text(name, text);
    json_.Key(name);
    json_.Null();
  }
  template <class Number>
  void Integer(const char* name, Number number) {
    json_.Key(name);
    json_.Json(std::to_string(number));
  }
  template <class Number>
  void IntegerOrNull(const char* name, const std::optional<Number>& number) {
    json_.Key(name);
    json_.Json(number ? std::to_string(*number) : "null");
  }
  void Boolean(const char* name, bool value) {
    json_.Key(name);
    json_.Boolean(value);
  }

  Hestra::JsonWriter& json_;
};

// Far above any recording, and small enough that sums of thousands of parts don't overflow. Members
// beyond them are invalid.
constexpr std::int64_t kMaxMicroseconds = 1'000'000'000'000;
constexpr std::int64_t kMaxFrames = 10'000'000'000;

std::uint64_t Unsigned(const JsonValue& json) {
  const std::int64_t number = json.Integer();
  return number < 0 || number > kMaxFrames ? 0 : static_cast<std::uint64_t>(number);
}

std::optional<std::int64_t> OptionalInteger(const JsonValue& json) {
  if (json.kind != JsonValue::Kind::kNumber) return std::nullopt;
  const std::int64_t number = json.Integer();
  if (number < -kMaxMicroseconds || number > kMaxMicroseconds) return std::nullopt;
  return number;
}

std::optional<std::uint64_t> OptionalUnsigned(const JsonValue& json) {
  if (json.kind != JsonValue::Kind::kNumber) return std::nullopt;
  const std::int64_t number = json.Integer();
  if (number < 0 || number > kMaxFrames) return std::nullopt;
  return static_cast<std::uint64_t>(number);
}

ImageSequence ImagesOf(const JsonValue& json) {
  return {json["prefix"].text,
          json["suffix"].text,
          Unsigned(json["first"]),
          Unsigned(json["last"]),
          static_cast<unsigned>(json["digits"].Integer()),
          Unsigned(json["missing"])};
}

ShotTrack TrackNamed(std::string_view name) {
  for (const ShotTrack track : {ShotTrack::kPicture, ShotTrack::kSound}) {
    if (name == NameOf(track)) return track;
  }
  return ShotTrack::kPictureAndSound;
}

ShotPart PartOf(const JsonValue& json) {
  ShotPart part;
  part.name = json["name"].text;
  part.path = json["path"].text;
  part.track = TrackNamed(json["track"].text);
  part.channel = static_cast<unsigned>(json["channel"].Integer());
  part.isPresent = json["present"].boolean;
  part.isInferred = json["inferred"].boolean;
  part.frames = OptionalUnsigned(json["frames"]);
  part.firstFrame = Unsigned(json["firstFrame"]);
  part.framesAfter = Unsigned(json["framesAfter"]);
  part.stampMicroseconds = OptionalInteger(json["stampMicroseconds"]);
  part.startTimecode = json["startTimecode"].text;
  part.startFrame = OptionalUnsigned(json["startFrame"]);
  part.joinMicroseconds = OptionalInteger(json["joinMicroseconds"]);
  const JsonValue& images = json["images"];
  if (images.kind == JsonValue::Kind::kObject) part.images = ImagesOf(images);
  return part;
}

}  // namespace

const char* NameOf(ShotTrack track) { return kTracks[static_cast<std::size_t>(track)]; }

std::string FractionOf(const ShotRate& rate) {
  return std::to_string(rate.numerator) + "/" + std::to_string(rate.denominator);
}

void WriteShot(Hestra::JsonWriter& json, const ShotParts& shot) {
  ShotWriter(json).WriteShot(shot);
}

std::string ToJson(const ShotParts& shot) {
  if (shot.parts.empty()) return "null";
  std::string text;
  {
    Hestra::JsonWriter json([&text](std::string_view part) { text += part; }, false);
    json.BeginObject();
    WriteShot(json, shot);
    json.EndObject();
  }
  text.pop_back();  // the newline
  return text;
}

std::optional<ShotParts> ShotOf(const JsonValue& json) {
  if (json["parts"].items.empty()) return std::nullopt;
  ShotParts shot;
  shot.rate = RateOfFraction(json["rate"].text);
  shot.isComplete = json["complete"].boolean;
  for (const JsonValue& part : json["parts"].items) shot.parts.push_back(PartOf(part));
  return shot;
}

ShotRate RateOfFraction(std::string_view text) {
  ShotRate rate;
  const char* const end = text.data() + text.size();
  const auto upper = std::from_chars(text.data(), end, rate.numerator);
  if (upper.ec != std::errc() || upper.ptr == end || *upper.ptr != '/') return {};
  const auto lower = std::from_chars(upper.ptr + 1, end, rate.denominator);
  return lower.ec == std::errc() && lower.ptr == end && rate.IsKnown() ? rate : ShotRate();
}

}  // namespace Sorvik
