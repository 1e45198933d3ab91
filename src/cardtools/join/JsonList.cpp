// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/JsonWriter.h"
#include "cardtools/join/JoinFormats.h"

namespace Sorvik {
namespace {

class PartsWriter {
 public:
  explicit PartsWriter(Hestra::JsonWriter& json) : json_(json) {}

  void WriteShot(const JoinShot& shot) {
    const ShotRate& rate = shot.shot.rate;
    json_.BeginObject();
    Text("key", shot.key);
    Text("name", shot.name);
    TextOrNull("rate", rate.IsKnown() ? RateText(rate) : std::string());
    Boolean("complete", shot.shot.isComplete);
    json_.Key("parts");
    json_.BeginArray();
    for (const ShotPart& part : shot.shot.parts) WritePart(part);
    json_.EndArray();
    json_.EndObject();
  }

  void Text(const char* name, const std::string& text) {
    json_.Key(name);
    json_.String(text);
  }

 private:
  void WritePart(const ShotPart& part) {
    json_.BeginObject();
    Text("name", part.name);
    TextOrNull("path", part.path);
    Text("track", TrackName(part));
    Integer("channel", part.channel);
    Boolean("present", part.isPresent);
    Boolean("inferred", part.isInferred);
    IntegerOrNull("frames", part.frames);
    Integer("firstFrame", part.firstFrame);
    Integer("framesAfter", part.framesAfter);
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

}  // namespace

std::string JsonList(const JoinList& list, bool indents) {
  std::string text;
  {
    Hestra::JsonWriter json([&text](std::string_view part) { text += part; }, indents);
    PartsWriter writer(json);
    json.BeginObject();
    writer.Text("path", list.path);
    writer.Text("provider", list.provider);
    json.Key("clips");
    json.BeginArray();
    for (const JoinShot& shot : list.shots) writer.WriteShot(shot);
    json.EndArray();
    json.EndObject();
  }
  return text;
}

}  // namespace Sorvik
