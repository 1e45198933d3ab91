// SPDX-License-Identifier: MIT
#include "cardtools/ShotJson.h"

#include <charconv>
#include <utility>

#include "foundation/JsonLine.h"

namespace Sorvik {
namespace {

using foundation::JsonLine;
using foundation::JsonValue;

constexpr std::string_view kTracks[] = {"pictureAndSound", "picture", "sound"};

template <class Number>
JsonLine& OptionalInteger(JsonLine& line, std::string_view name,
                          const std::optional<Number>& number) {
  return number ? line.Integer(name, *number) : line.Json(name, "null");
}

// Without the end of line.
std::string TakeObject(JsonLine& line) {
  std::string object = line.Take();
  object.pop_back();
  return object;
}

std::string ToJson(const ImageSequence& images) {
  JsonLine line;
  line.Text("prefix", images.prefix).Text("suffix", images.suffix);
  line.Integer("first", images.first).Integer("last", images.last);
  line.Integer("digits", images.digits).Integer("missing", images.missing);
  return TakeObject(line);
}

std::string ToJson(const ShotPart& part) {
  JsonLine line;
  line.Text("name", part.name).Text("path", part.path);
  line.Text("track", kTracks[static_cast<std::size_t>(part.track)]);
  line.Integer("channel", part.channel);
  line.Boolean("present", part.isPresent).Boolean("inferred", part.isInferred);
  OptionalInteger(line, "frames", part.frames);
  line.Integer("firstFrame", part.firstFrame).Integer("framesAfter", part.framesAfter);
  OptionalInteger(line, "stampMicroseconds", part.stampMicroseconds);
  line.OptionalText("startTimecode", part.startTimecode);
  OptionalInteger(line, "startFrame", part.startFrame);
  OptionalInteger(line, "joinMicroseconds", part.joinMicroseconds);
  line.Json("images", part.images ? ToJson(*part.images) : "null");
  return TakeObject(line);
}

std::uint64_t Unsigned(const JsonValue& json) { return static_cast<std::uint64_t>(json.Integer()); }

std::optional<std::int64_t> OptionalInteger(const JsonValue& json) {
  if (json.kind != JsonValue::Kind::kNumber) return std::nullopt;
  return json.Integer();
}

std::optional<std::uint64_t> OptionalUnsigned(const JsonValue& json) {
  if (json.kind != JsonValue::Kind::kNumber) return std::nullopt;
  return Unsigned(json);
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
  if (name == kTracks[static_cast<std::size_t>(ShotTrack::kPicture)]) return ShotTrack::kPicture;
  if (name == kTracks[static_cast<std::size_t>(ShotTrack::kSound)]) return ShotTrack::kSound;
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

std::string ToJson(const ShotParts& shot) {
  if (shot.parts.empty()) return "null";
  std::string parts = "[";
  for (const ShotPart& part : shot.parts) parts += (parts.size() > 1 ? "," : "") + ToJson(part);
  JsonLine line;
  line.OptionalText("rate", shot.rate.IsKnown() ? std::to_string(shot.rate.numerator) + '/' +
                                                      std::to_string(shot.rate.denominator)
                                                : std::string());
  line.Boolean("complete", shot.isComplete).Json("parts", parts + ']');
  return TakeObject(line);
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
